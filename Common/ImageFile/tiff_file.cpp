#include "ImageFile/tiff_file.h"

namespace qv {

struct TiffFile::Calls {
  static TiffFile& Of(thandle_t handle) { return *static_cast<TiffFile*>(handle); }

  static tmsize_t Read(thandle_t handle, void* bytes, tmsize_t count) {
    size_t taken = 0;
    const bool done = Of(handle).file_.Read(bytes, static_cast<size_t>(count), &taken);
    Of(handle).failed_ |= !done;
    return done ? static_cast<tmsize_t>(taken) : -1;
  }
  static tmsize_t Write(thandle_t /*handle*/, void* /*bytes*/, tmsize_t /*count*/) { return -1; }
  static toff_t Seek(thandle_t handle, toff_t offset, int whence) {
    constexpr Origin kOrigins[] = {Origin::kStart, Origin::kCurrent, Origin::kEnd};  // SEEK_SET, SEEK_CUR, SEEK_END
    int64_t position = 0;
    const bool done = Of(handle).file_.Seek(static_cast<int64_t>(offset), kOrigins[whence], &position);
    Of(handle).failed_ |= !done;
    return done ? static_cast<toff_t>(position) : static_cast<toff_t>(-1);
  }
  static toff_t Size(thandle_t handle) {
    int64_t here = 0, end = 0;
    File& file = Of(handle).file_;
    const bool done =
        file.Seek(0, Origin::kCurrent, &here) && file.Seek(0, Origin::kEnd, &end) && file.Seek(here, Origin::kStart);
    Of(handle).failed_ |= !done;
    return static_cast<toff_t>(end);
  }
  static int Close(thandle_t /*handle*/) { return 0; }  // the file is its owner's
  static int Silence(TIFF* /*tiff*/, void* /*user*/, const char* /*module*/, const char* /*text*/, va_list /*values*/) {
    return 1;
  }
};

TiffHandle TiffFile::Open() {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 TIFFOpenOptionsFree);
  if (!options || !file_.Seek(0, Origin::kStart)) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Calls::Silence, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Calls::Silence, nullptr);
  return TiffHandle(TIFFClientOpenExt("", "r", this, Calls::Read, Calls::Write, Calls::Seek, Calls::Close, Calls::Size,
                                      nullptr, nullptr, options.get()));
}

}  // namespace qv
