// The status codes inside the library: the public table, but a status that is dropped is an error of the compiler.
#pragma once

#include "Qvclr15x.h"

namespace qv {

// Any 32-bit value can stand here: a missing resource is told by the system's own (positive) error number.
enum class [[nodiscard]] Status : int32_t{
    kSuccess = SUCCESS,
    kFailure = ERR_FAILURE,
    kFileAccess = ERR_FILE_ACCESS,
    kFileWrite = ERR_FILE_WRITE,
    kFileOpen = ERR_FILE_OPEN,
    kNothingDone = FAILURE,
    kNoMemory = ERR_NO_MEMORY,
    kFileRead = ERR_FILE_READ,
    kProfileName = ERR_PROFILE_NAME,
    kInvalidParameter = ERR_INV_PARAMETER,
    kIccTagNotFound = ERR_ICC_TAG_NOT_FOUND,
    kBadPointer = ERR_BAD_POINTER,
    kInvalidConverter = ERR_INV_CONVERTER,
    kInPlacePadding = ERR_INPLACE_PADDING,
    kUnsupportedColorSpace = ERR_UNSUPPORTED_COLORSPACE,
    kUnsupportedMethod = ERR_UNSUPPORTED_METHOD,
    kProfileOpen = ERR_PROFILE_OPEN,
    kInvalidStructSize = ERR_INV_STRUCT_SIZE,
    kProfileNotFound = ERR_ICC_PROFILE_NOT_FOUND,
    kProfileData = ERR_ICC_PROFILE_DATA,
    kProfileNoData = ERR_ICC_PROFILE_NO_DATA,
    kFormatNotSupported = ERR_ICC_FORMAT_NOT_SUPPORTED,
    kPrivateTag = ERR_ICC_PRIVATE_TAG,
    kUnknownTagType = ERR_ICC_UNKNOWN_TAG_TYPE,
    kPrivateTagUnknownType = ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE,
    kInvalidProfile = ERR_ICC_INVALID_PROFILE,
    kInvalidWidthAlignment = ERR_INV_WIDTH_ALIGNMENT,
    kInvalidYuv9Size = ERR_INV_YUV9_SIZE,
};
using enum Status;

constexpr bool Ok(Status status) { return status == kSuccess; }

}  // namespace qv
