#include "qvclr/converter.h"

#include "qvclr/icc_transform.h"

namespace qv {
namespace {

void DropTransform(IccTransform*& transform) {
  IccTransform::Delete(transform);
  transform = nullptr;
}

}  // namespace

void DropMemoryProfile(IccMemoryProfile*& profile) {
  if (profile) Release(const_cast<void*>(profile->pBytes));
  Drop(profile);
}

void DropYuvRecord(YuvRecord*& record) {
  if (record) Release(const_cast<uint8_t*>(record->params.pLumaTable));
  Drop(record);
}

void ConverterList::Append(Node* node) {
  node->next = nullptr;
  node->previous = tail_;
  (tail_ ? tail_->next : head_) = node;
  tail_ = node;
}

void ConverterList::Unlink(Node* node) {
  (node->previous ? node->previous->next : head_) = node->next;
  (node->next ? node->next->previous : tail_) = node->previous;
}

ConverterList::Node* ConverterList::Find(const ColorConverter* converter) const {
  Node* node = head_;
  while (node && node->converter != converter) node = node->next;
  return node;
}

bool ReleaseByMask(ColorConverter* converter) {
  Drop(converter->cmyk_params);
  DropYuvRecord(converter->yuv);
  Drop(converter->lab_to_rgb);
  Drop(converter->rgb_to_lab);
  Drop(converter->source11_tables);
  Drop(converter->white_point);
  if (converter->method_mask & METHOD_ICC) DropTransform(converter->built_in_icc);
  if (converter->method_mask & METHOD_CUSTOM_ICC) DropTransform(converter->custom_icc);
  if ((converter->method_mask & METHOD_CUSTOM_TABLE) && converter->built_in_table) Drop(converter->custom_table);
  DropMemoryProfile(converter->src_profile_memory);
  DropMemoryProfile(converter->dst_profile_memory);
  return !converter->built_in_icc && !converter->custom_icc && !converter->custom_table;
}

void ConverterReleaser::operator()(ColorConverter* converter) const {
  static_cast<void>(ReleaseByMask(converter));
  DropTransform(converter->built_in_icc);
  DropTransform(converter->custom_icc);
  Drop(converter->custom_table);
  Release(converter);
}

}  // namespace qv
