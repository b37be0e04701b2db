/* Qvclr15x: colour conversion of raw pixel buffers. The one public header, for C99 and C++.
 *
 * Every function returns SUCCESS (1) or a negative code of QStatus unless its comment says otherwise; nothing is
 * thrown. Records and handles have the same layout on every system: pointers have 8 bytes, integers are little-endian.
 * Threads: different converters may be created, used and freed by many threads at once. One converter belongs to one
 * thread at a time. Unloading the library, and the end of the process, release every converter that is left: all calls
 * must have ended before. */
#ifndef QVCLR15X_H
#define QVCLR15X_H

#include <stddef.h>
#include <stdint.h>

/* One UTF-16 code unit; file names are zero-terminated strings of them. */
#ifdef _WIN32
typedef wchar_t QWChar;
#else
#ifndef __cplusplus
#include <uchar.h>
#endif
typedef char16_t QWChar;
#endif

/* The functions that the library lends to its users. */
#if defined(__GNUC__) && !defined(_WIN32)
#define Q_EXPORTED __attribute__((visibility("default")))
#else
#define Q_EXPORTED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Status codes. */
enum QStatus {
  SUCCESS = 1,
  FAILURE = 0,                              /* plain failure of a yes/no step */
  ERR_FAILURE = -1,                         /* generic failure; in the profile functions also a failed allocation */
  ERR_NO_MEMORY = -3,                       /* an allocation failed */
  ERR_FILE_WRITE = -5,                      /* writing a file failed */
  ERR_FILE_READ = -7,                       /* a file could not be read */
  ERR_PROFILE_NAME = -8,                    /* a name of no existing file, or of more than 259 characters */
  ERR_FILE_ACCESS = -10,                    /* an image file could not be opened for reading */
  ERR_INV_PARAMETER = -13,                  /* a null or otherwise invalid argument */
  ERR_FILE_OPEN = -14,                      /* a file could not be opened or created */
  ERR_ICC_TAG_NOT_FOUND = -37,              /* no such tag; also a grey HLS pixel with a nonzero hue */
  ERR_BAD_POINTER = -60,                    /* a record or buffer is not readable (writable) for its size */
  ERR_INV_CONVERTER = -261,                 /* the handle is no live converter of this library */
  ERR_INPLACE_PADDING = -351,               /* a conversion in place that its paddings forbid */
  ERR_UNSUPPORTED_COLORSPACE = -785,        /* an unknown space, or a pair that the method does not convert */
  ERR_UNSUPPORTED_METHOD = -786,            /* no usable conversion method */
  ERR_PROFILE_OPEN = -787,                  /* an ICC profile could not be opened or does not fit its side */
  ERR_INV_STRUCT_SIZE = -789,               /* the size field at the head of a record is wrong */
  ERR_INV_WIDTH_ALIGNMENT = -796,           /* the width is no multiple of the packed YUV group */
  ERR_INV_YUV9_SIZE = -797,                 /* the width or height is no multiple of 4 in CS_YVU9 */
  ERR_ICC_PROFILE_NOT_FOUND = -812,         /* the image file holds no profile */
  ERR_ICC_PROFILE_DATA = -813,              /* embedded profile data is truncated or malformed */
  ERR_ICC_PROFILE_NO_DATA = -817,           /* nothing stands behind the PostScript begin marker */
  ERR_ICC_PRIVATE_TAG = -1150,              /* handled, but the tag's signature is not a registered one */
  ERR_ICC_UNKNOWN_TAG_TYPE = -1151,         /* handled as raw bytes: the type is not decoded */
  ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE = -1152, /* both of these */
  ERR_ICC_INVALID_PROFILE = -1153,          /* profile bytes or a record that cannot be accepted */
  ERR_ICC_FORMAT_NOT_SUPPORTED = -1154      /* the image file's format carries no profile here */
};

/* Colour spaces: layouts of 8-bit samples. Widths and heights are in pixels. */
enum ColorSpaceId {
  CS_RGB = 0,           /* R, G, B; 24 bits per pixel */
  CS_YUV = 1,           /* Y, U, V: analog-television YUV with offset chroma; 24 */
  CS_CMYK = 2,          /* C, M, Y, K: 0 = no ink; 32 */
  CS_HSV = 3,           /* H, S, V: hue scaled to 0..255; 24 */
  CS_HLS = 4,           /* H, L, S: hue scaled to 0..255; 24 */
  CS_YIQ = 5,           /* Y, I, Q with offset I and Q; 24 */
  CS_CMY = 6,           /* C, M, Y; 24 */
  CS_LAB = 7,           /* L* x 255 / 100, a*, b*; 24. By ICC (methods 2 and 4) a and b are stored as value + 128;
                           by formula and by table they are signed bytes (two's complement). */
  CS_XYZ = 8,           /* X, Y, Z on the scale of the RGB bytes; 24 */
  CS_YUY2 = 9,          /* packed 4:2:2: Y0, U, Y1, V; 16; even widths */
  CS_YVU9 = 10,         /* planar 4:1:0: Y plane, V plane, U plane; 9; widths and heights that are multiples of 4 */
  CS_CMYK_PROFILE = 11, /* Y, Cb, Cr, K: CMYK whose CMY part is carried as full-range YCbCr of its complement; 32 */
  CS_BGR = 12,          /* B, G, R; 24 */
  CS_Y41P = 13,         /* packed 4:1:1: U0 Y0 V0 Y1 U4 Y2 V4 Y3 Y4 Y5 Y6 Y7; 12; widths that are multiples of 8 */
  CS_UYVY = 14,         /* packed 4:2:2: U, Y0, V, Y1; 16; even widths */
  CS_YCBCR = 15,        /* Y, Cb, Cr: full range (JFIF), Cb and Cr as signed bytes; 24 */
  CS_HSI = 128          /* I, H, S; 24 */
};

/* Conversion methods; a mask of methods is the OR of their bits. */
enum QMethod {
  METHOD_FORMULA = 1,       /* built-in formulas */
  METHOD_ICC = 2,           /* ICC profiling with the built-in profiles (spaces 0, 2, 6, 7, 12) */
  METHOD_CUSTOM_ICC = 4,    /* ICC profiling with the caller's profiles */
  METHOD_TABLE = 8,         /* built-in emulation tables */
  METHOD_CUSTOM_TABLE = 16, /* emulation tables read from the caller's TIFF file */
  METHOD_AUTOMATIC = 32     /* automatic choice: only as the value of both nActiveMethod and nMethodMask */
};

#pragma pack(push, 1)
/* Reference white of the profile connection space on the non-RGB side; ICC methods only. 20 bytes. */
typedef struct WhitePointParams {
  uint32_t nWhitePoint; /* 50, 55, 65, 75: D50 ... D75; 93: 9300 K; 0: the point x, y; any other value: D50 */
  double x, y; /* CIE 1931 chromaticity of the custom point, Y = 1; none, or X or Z not above 0: ERR_INV_PARAMETER */
} WhitePointParams;

/* Settings of CS_YUV; zero in a number stands for the plain kernel's own constant. 44 bytes. */
typedef struct Space1Params {
  uint32_t uStructSize;      /* 44 */
  uint32_t nFlags;           /* which fields a change takes over */
  uint32_t nUSpan, nUOffset; /* 223, 112 */
  uint32_t nVSpan, nVOffset; /* 275, 138 */
  const uint8_t* pLumaTable; /* stored Y per luma; used when it has at least 256 bytes */
  uint32_t nLumaTableBytes;
  uint32_t nLumaSpan; /* 255 */
  uint8_t reserved[4];
} Space1Params;

/* An ICC profile held in memory. 16 bytes. */
typedef struct IccMemoryProfile {
  uint32_t uStructSize; /* not tested */
  const void* pBytes;
  uint32_t nByteCount;
} IccMemoryProfile;
#pragma pack(pop)

/* Settings of CS_CMYK by formula. 12 bytes. */
typedef struct CmykParams {
  uint32_t uStructSize; /* 12 */
  int32_t nBlackParam;  /* black generation in thousandths; 175 where no record is given */
  uint32_t nFlags;      /* bit 1: a change takes nBlackParam over */
} CmykParams;

/* Coding of CS_LAB by formula: a sample is value * 255 / range + offset. A range of 0 or below means the field's
 * default. 32 bytes. */
typedef struct LabParams {
  uint32_t uStructSize;      /* 32 */
  uint32_t nFlags;           /* which values a change takes over */
  int32_t nLOffset, nLRange; /* 0, 100 */
  int32_t nAOffset, nARange; /* 128, 170 */
  int32_t nBOffset, nBRange; /* 96, 200 */
} LabParams;

/* What a converter is made from. 1648 bytes. Pointers may be null. The library never writes to it and keeps no pointer
 * into it: everything that it needs later is copied. Sub-records that are not readable give ERR_BAD_POINTER, those
 * whose size field is wrong ERR_INV_STRUCT_SIZE. */
typedef struct ConversionParams {
  uint32_t uStructSize;                /* 1648 */
  uint32_t nActiveMethod;              /* the method used when converting: one bit, or METHOD_AUTOMATIC */
  const WhitePointParams* pWhitePoint; /* null: D50 */
  QWChar sSourceProfileName[260];      /* profile files of METHOD_CUSTOM_ICC; at most 259 characters */
  uint32_t nReserved1[2];
  const IccMemoryProfile* pSourceProfileMemory; /* taken before the file */
  QWChar sDestProfileName[260];
  uint32_t nReserved2[2];
  const IccMemoryProfile* pDestProfileMemory;
  QWChar sEmulationTableName[260]; /* TIFF file of METHOD_CUSTOM_TABLE */
  uint32_t nReserved3[2];
  const CmykParams* pCmykParams;     /* read when either side is CS_CMYK */
  const Space1Params* pSpace1Params; /* read when either side is CS_YUV */
  const LabParams* pLabParams;       /* read when either side is CS_LAB */
  uint32_t nMethodMask;              /* the methods that the converter is prepared for */
  uint32_t nEmulationTableKind;      /* must be 8 when nActiveMethod is METHOD_TABLE */
} ConversionParams;

/* The same with narrow strings: the system's narrow encoding on Windows, UTF-8 elsewhere. 880 bytes. */
typedef struct ConversionParamsA {
  uint32_t uStructSize; /* not tested */
  uint32_t nActiveMethod;
  const WhitePointParams* pWhitePoint;
  char sSourceProfileName[260];
  uint32_t nReserved1[2];
  const IccMemoryProfile* pSourceProfileMemory;
  char sDestProfileName[260];
  uint32_t nReserved2[2];
  const IccMemoryProfile* pDestProfileMemory;
  char sEmulationTableName[260];
  uint32_t nReserved3[2];
  const CmykParams* pCmykParams;
  const Space1Params* pSpace1Params;
  const LabParams* pLabParams;
  uint32_t nMethodMask;
  uint32_t nEmulationTableKind;
} ConversionParamsA;

/* A bitmap whose lines belong to the library until Q_FreeBitmap. 32 bytes. */
typedef struct BitmapHandle {
  uint32_t uStructSize;   /* 32, set when it is filled */
  uint32_t nBitsPerPixel; /* 24 */
  int32_t nWidth;         /* pixels per line */
  int32_t nHeight;        /* negative for top-down lines */
  uint32_t nLineBytes;    /* (nWidth * 24 + 31) / 32 * 4 */
  uint32_t uImageSize;    /* nLineBytes times the number of lines */
  uint8_t* pBits;
} BitmapHandle;

/* A converter; callers hold only its address, the handle. */
typedef struct ColorConverter ColorConverter;

/* What Q_ClrSetConversionParams changes: the bits of nMethodMask in that call. */
enum QConversionChange {
  CHANGE_ACTIVE_METHOD = 1, /* nActiveMethod */
  CHANGE_PROFILES = 2,      /* sSourceProfileName, sDestProfileName */
  CHANGE_WHITE_POINT = 4,   /* pWhitePoint */
  CHANGE_TABLE = 8,         /* sEmulationTableName */
  CHANGE_CMYK = 16,         /* pCmykParams: nBlackParam when bit 1 of its nFlags is set */
  CHANGE_SPACE1 = 32,       /* pSpace1Params: bits 1, 2, 4, 8 of its nFlags: nUSpan, nUOffset, nVSpan, nVOffset; 16: the
                             * bytes of pLumaTable, nLumaTableBytes of them; 32: nLumaTableBytes; 64: nLumaSpan */
  CHANGE_LAB = 64           /* pLabParams: bits 1 to 32 of its nFlags: its six values in their order */
};

/* Creates a converter from nSrcSpace to nDstSpace and stores its handle; nothing is stored unless it returns 1.
 * Without pParams it converts by built-in formulas. With equal spaces (and no METHOD_CUSTOM_ICC in the mask) any
 * identifier is accepted and neither it nor the record's size is looked at: such a converter copies pixels of
 * the known spaces.
 *
 * Checks, in this order: phConverter null: -13, not writable: -60; pParams not readable for 1648 bytes: -60; its size
 * field: -789; a space outside of 0..15 and 128: -785; METHOD_TABLE active with another table kind than 8: -13; the
 * white point not readable: -60; no method in the mask, or the active one not in it: -786. Then what the methods in the
 * mask need is prepared, in the order of their bits:
 * - METHOD_ICC, METHOD_CUSTOM_ICC, where a side is RGB or both are the same: a pair that the engine does not convert:
 * -785; a missing resource: the system's error number; a custom white point that is no chromaticity: -13. Each side of
 *   METHOD_CUSTOM_ICC takes the profile in memory when there is one, else the named file, else the built-in
 *   profile of its space. Neither memory nor name on either side, or a name of no file: -8; memory that is not
 * readable: -60; what the engine cannot open, or a profile of another space than its side's: -787.
 * - METHOD_TABLE: a missing table shows only in conversion.
 * - METHOD_CUSTOM_TABLE, for CMYK to RGB, RGB to Lab, Lab to RGB: a name of no file: -8; a file that cannot be read as
 * a table: -7. The file is an uncompressed little-endian TIFF of one strip, whose bytes are the nodes of the table,
 *   three bytes each, the first channel slowest: 17 x 17 x 17 x 17 nodes, 16 steps apart, for CMYK, else
 *   33 x 33 x 33, 8 apart. Bytes that it lacks are 0.
 * Memory: -3. */
Q_EXPORTED int32_t Q_ClrInit(ColorConverter** phConverter, uint32_t nSrcSpace, uint32_t nDstSpace,
                             const ConversionParams* pParams);
Q_EXPORTED int32_t Q_ClrInitA(ColorConverter** phConverter, uint32_t nSrcSpace, uint32_t nDstSpace,
                              const ConversionParamsA* pParams);

/* Changes a live converter, which must not be converting meanwhile. nMethodMask of the record holds QConversionChange
 * bits; what they do not select is not read, nor is uStructSize. The changes are made in this order, up to the first
 * failure; what was changed before it stays. For want of memory (-3), the copies of records that this call made
 * go again.
 *
 * Checks: null: -13; a record not readable: -60; no live converter: -261.
 * - CHANGE_ACTIVE_METHOD: one of 1, 2, 4, 8 that is not in the converter's mask: -786. Other values are taken untested.
 * - CHANGE_CMYK, CHANGE_SPACE1, CHANGE_LAB: neither side is of that space: -786; a null record: -13 (for CHANGE_SPACE1
 * a null pCmykParams too, which it does not read); one that is not readable: -60; its size field: -789. A converter
 * that holds none of the kind takes a copy of the whole record; CHANGE_LAB then takes 0, 100, 128, 170, 96, 200 and the
 * white 96.421, 99.997, 82.524 in its place, and serves only conversion from CS_LAB.
 * - CHANGE_WHITE_POINT, with 1, 2, 4 or 8 active: null: -13; not readable: -60. The transform of method 2 or 4 is made
 * anew when that method is active, with the failures of Q_ClrInit.
 * - CHANGE_PROFILES: both names are taken over and the transform of METHOD_CUSTOM_ICC is made anew, with the failures
 * of Q_ClrInit. A side without a new name keeps its profile in memory.
 * - CHANGE_TABLE: the table of METHOD_CUSTOM_TABLE is released, and read again for CMYK to RGB or BGR and for RGB to
 * Lab. A file that cannot be read makes it a table of zeros, not a failure. After a failed making the transform is
 * gone, and conversion by its method returns -786. */
Q_EXPORTED int32_t Q_ClrSetConversionParams(ColorConverter* hConverter, const ConversionParams* pParams);
Q_EXPORTED int32_t Q_ClrSetConversionParamsA(ColorConverter* hConverter, const ConversionParamsA* pParams);

/* Releases a converter and all that it owns. Null or unreadable: -13; no live converter: -261. */
Q_EXPORTED int32_t Q_ClrFree(ColorConverter* hConverter);

/* 1 for a live converter, else -261. */
Q_EXPORTED int32_t Q_ClrIsValid(const ColorConverter* hConverter);

/* Names the module whose resources (profiles, tables, dialogs) are read from now on: a module handle on Windows, a
 * dlopen handle elsewhere (null: the running program's own, elsewhere whatever is loaded globally). Not checked here:
 * what the module lacks shows when it is needed. The library itself is the module until this is called. */
Q_EXPORTED void SetResModule(void* hModule);

#ifdef _WIN32
/* Windows only: lets the user of a program choose how CMYK or CIE Lab is converted, in a modal dialog, and makes a
 * converter from that where phConverter is not null. Returns 1 when the user accepted: the record is one that
 * Q_ClrInit takes, and has been tried. 0: cancelled, or the window went with its owner; nothing is written.
 *
 * pnSrcSpace and pnDstSpace go in with the pair: CS_CMYK or CS_LAB on one side, CS_RGB or CS_BGR on the other. The user
 * may switch between these two. The dialog opens with what the record holds. It sets nActiveMethod, nMethodMask (to the
 * same, one method), for METHOD_TABLE nEmulationTableKind, and what the method uses: the two profile names
 * (METHOD_CUSTOM_ICC; but not of a side with a profile in memory), the table's name (METHOD_CUSTOM_TABLE), the white
 * point (profiles), nBlackParam or the six values of LabParams (formulas). The white point and the values are written
 * into the caller's sub-records; they must be writable, and what has none cannot be set. All else stays as it is, the
 * nFlags of the sub-records too. A pair that has no table, RGB to CMYK, does not offer the methods of tables.
 *
 * The user is told of what Q_ClrInit would refuse, and the dialog stays open. Its template and strings are read from
 * the resource module (see SetResModule), so that they can be translated.
 *
 * Checks, in this order: a null argument other than hWndParent and phConverter, or an hWndParent that is no window:
 * -13; phConverter, a space or the record not writable: -60; the size field of a ConversionParams: -789; the pair:
 * -785; pWhitePoint or the sub-record of the pair not writable: -60, the latter's size field: -789. A template that the
 * resource module lacks, or a window that cannot be made: the system's error number.
 *
 * hWndParent is the HWND of the owner, or null. Q_ClrDlgA: a name that has no narrow form, or none of up to 259 bytes,
 * is not accepted from the user; a name that could not be converted to wide is shown empty, and kept unless the
 * method uses it. */
Q_EXPORTED int32_t Q_ClrDlg(void* hWndParent, ColorConverter** phConverter, uint32_t* pnSrcSpace, uint32_t* pnDstSpace,
                            ConversionParams* pParams);
Q_EXPORTED int32_t Q_ClrDlgA(void* hWndParent, ColorConverter** phConverter, uint32_t* pnSrcSpace, uint32_t* pnDstSpace,
                             ConversionParamsA* pParams);
#endif

/* Converts width x height pixels. A line holds (width * bits + 7) / 8 bytes, then nInAlign (nOutAlign) bytes of
 * padding, which the last line may lack; output padding is never written. The buffers may overlap, and pSrc may
 * equal pDst.
 *
 * Checks, in this order: a null pointer, a size below 1 or a padding below 0: -13; the handle not readable for 1712
 * bytes: -60; a space of no known size: -785; a buffer not readable or writable for its size: -60; no live converter:
 * -261; in place with equal spaces and unequal paddings: -351. The built-in formulas then test the buffers with the
 * padding of the last line too: -13. The size rules of the YUV layouts: -796, -797. An active method that the converter
 * was not prepared for: -786; a pair that it does not convert: -785; memory for an overlapping pair of buffers: -3.
 *
 * Intended, and kept: equal spaces with both paddings below 2 are copied as one block without padding; with a larger
 * one, each line starts nInAlign (nOutAlign) bytes behind the start of the one before, not a whole line behind it. A
 * pair without an RGB side returns 1 whatever became of it. */
Q_EXPORTED int32_t Q_ClrConvert(ColorConverter* hConverter, const void* pSrc, void* pDst, int32_t width, int32_t height,
                                int32_t nInAlign, int32_t nOutAlign);

/* Converts by built-in formulas without a converter, through RGB where neither side is RGB or BGR. Paddings below 0
 * count as 0, and the last line must have its padding too.
 *
 * Checks, in this order: a null pointer or a size below 1: -13; an unknown space: -785; the size rules of the source,
 * then of the destination: -796, -797; a buffer: -60; in place with equal spaces and equal paddings: -351; memory: -3.
 * Equal spaces are copied line by line. */
Q_EXPORTED int32_t Q_ClrConvertDirect(uint32_t nSrcSpace, uint32_t nDstSpace, const void* pSrc, void* pDst,
                                      int32_t width, int32_t height, int32_t nInAlign, int32_t nOutAlign);

/* Converts to 24-bit RGB or BGR and fills a bitmap, whose lines Q_FreeBitmap releases; a bitmap that was filled before
 * is not released by it. Lines are top-down. nOutAlign counts between the lines that are converted, not in the bitmap.
 *
 * Checks, in this order: a null pSrc or pBitmap: -13; the handle not readable for 1712 bytes: -60; the input not
 * readable with the padding of every line: -60; no live converter: -261; another destination than CS_RGB and CS_BGR:
 * -785; memory: -3. Then the result of Q_ClrConvert; that of filling the bitmap is not told (intended). */
Q_EXPORTED int32_t Q_ClrConvertToBitmap(ColorConverter* hConverter, const void* pSrc, BitmapHandle* pBitmap,
                                        uint32_t uBitmapSize, int32_t width, int32_t height, int32_t nInAlign,
                                        int32_t nOutAlign);

/* The same without a converter. A null pointer, or another destination than CS_RGB and CS_BGR: -13; memory: -3; a
 * failure of Q_ClrConvertDirect. Else the result of filling the bitmap: uBitmapSize other than 32: -789; not writable:
 * -60; no memory for its lines: -3. */
Q_EXPORTED int32_t Q_ClrConvertDirectToBitmap(uint32_t nSrcSpace, uint32_t nDstSpace, const void* pSrc,
                                              BitmapHandle* pBitmap, uint32_t uBitmapSize, int32_t width,
                                              int32_t height, int32_t nInAlign, int32_t nOutAlign);

/* Releases the lines of a filled bitmap and clears the record. Null: -13; not writable: -60; uStructSize: -789. */
Q_EXPORTED int32_t Q_FreeBitmap(BitmapHandle* pBitmap);

/* ---- ICC profiles (ICC.1:2010, version 4) ----
 *
 * A record is made by Q_InitICCProfile, filled by a Q_FillICCProfile... function or by Q_InitICCHeader, the setters and
 * Q_SetICCTagData, turned into bytes by Q_GenerateICCPointer, and released by Q_FreeICCProfile. Signatures are numbers
 * whose big-endian bytes are their four characters: 'acsp' is 0x61637370. In these functions -1 stands for memory. A
 * record belongs to one thread at a time. */
#pragma pack(push, 1)
typedef struct IccDateTime {
  uint16_t year, month, day, hours, minutes, seconds;
} IccDateTime;

/* The header of a profile, its numbers in host order. 128 bytes, at the places of ICC.1 7.2. */
typedef struct IccHeader {
  uint32_t profileSize;     /* of the whole profile in bytes */
  uint32_t cmmType;         /* preferred colour engine */
  uint32_t version;         /* 0x04200000 is 4.2.0 */
  uint32_t deviceClass;     /* 'mntr' ... */
  uint32_t colorSpace;      /* 'RGB ' ... */
  uint32_t connectionSpace; /* 'XYZ ' or 'Lab '; of a device link any colour space */
  IccDateTime dateTime;     /* of its making */
  uint32_t signature;       /* 'acsp' */
  uint32_t platform;        /* 'APPL', 'MSFT', 'SGI ', 'SUNW' or 0 */
  uint32_t flags;           /* 1: embedded; 2: not to be used without the embedding image */
  uint32_t manufacturer, model;
  uint64_t attributes;      /* 1: transparency; 2: matte; 4: negative; 8: black and white */
  uint32_t renderingIntent; /* 0 perceptual, 1 relative colorimetric, 2 saturation, 3 absolute colorimetric */
  uint32_t illuminant[3];   /* X, Y, Z of the connection space, s15Fixed16 */
  uint32_t creator;
  uint8_t profileId[16];
  uint8_t reserved[28];
} IccHeader;

typedef struct IccTagEntry {
  uint32_t signature;
  uint32_t offset; /* from the begin of the profile */
  uint32_t size;   /* in bytes, without padding */
} IccTagEntry;

/* 56 bytes; the caller's, but what the pointers point to is the library's. The data area is what follows the table in
 * the profile: a tag lies at tagData + offset - (132 + 12 * tagCount). While tagCount is 0 (or negative as a signed
 * number) tagTable and tagData mean nothing. */
typedef struct IccProfileRecord {
  uint32_t structSize;      /* 56 */
  uint64_t profileByteSize; /* of profileBytes */
  uint64_t tagDataSize;     /* of tagData */
  IccHeader* header;
  uint32_t tagCount;
  IccTagEntry* tagTable;
  uint8_t* tagData;
  uint8_t* profileBytes; /* the whole profile as it was read or generated last */
} IccProfileRecord;

/* Every structure of a tag opens with these two words. Q_GetICCTagData gives numbers in host order; in what
 * Q_CreateICCTagData makes, every number is in file order (big-endian) and reserved is 0. Arrays belong to the
 * structure until Q_FreeICCTagType. */

/* Any type that is not decoded. 20 bytes. */
typedef struct IccUnknownTagType {
  uint32_t typeSignature;
  uint32_t reserved;
  uint8_t* data;     /* the bytes of the tag behind its first eight */
  uint32_t dataSize; /* in host order always */
} IccUnknownTagType;

/* 'ui08', 'ui16', 'ui32', 'ui64' (ICC.1 10.24 to 10.27), 'uf32' (u16Fixed16, 10.23), 'sf32' (s15Fixed16, 10.20) and
 * 'XYZ ' (10.29). 20 bytes. */
typedef struct IccNumberArrayTagType {
  uint32_t typeSignature, reserved;
  void* values;        /* owned: numbers of the type's width; of 'XYZ ' three s15Fixed16 each: X, Y, Z */
  uint32_t valueCount; /* of an 'XYZ ' the triples; by the tag's size */
} IccNumberArrayTagType;

/* 'sig ' (10.21). A value of fewer than four characters is completed with spaces when it is set. 12 bytes. */
typedef struct IccSignatureTagType {
  uint32_t typeSignature, reserved;
  uint32_t signatureValue;
} IccSignatureTagType;

/* 'dtim' (10.7). 20 bytes. */
typedef struct IccDateTimeTagType {
  uint32_t typeSignature, reserved;
  IccDateTime dateTime;
} IccDateTimeTagType;

/* 'view' (10.28). 36 bytes. */
typedef struct IccViewingConditionsTagType {
  uint32_t typeSignature, reserved;
  uint32_t illuminant[3], surround[3]; /* X, Y, Z in cd/m2, s15Fixed16 */
  uint32_t illuminantType;
} IccViewingConditionsTagType;

/* 'meas' (10.12). 36 bytes. */
typedef struct IccMeasurementTagType {
  uint32_t typeSignature, reserved;
  uint32_t observer;
  uint32_t backing[3]; /* X, Y, Z, s15Fixed16 */
  uint32_t geometry;
  uint32_t flare; /* u16Fixed16 */
  uint32_t illuminantType;
} IccMeasurementTagType;

/* 'text' (10.22). Text is measured in 16-bit units and copied in bytes (intended): of u units before the first zero
 * unit, u + 1 bytes are set. What is set must hold a 16-bit zero. 16 bytes. */
typedef struct IccTextTagType {
  uint32_t typeSignature, reserved;
  char* text; /* owned; zeros follow */
} IccTextTagType;

/* 'data' (10.6). ASCII is set with the byte behind its dataLength bytes, which the caller must provide: the tag grows
 * by one each time it is read and set (intended). 24 bytes. */
typedef struct IccDataTagType {
  uint32_t typeSignature, reserved;
  uint32_t dataFlag; /* 0: ASCII; 1: binary */
  uint8_t* data;     /* owned; zeros follow */
  uint32_t dataLength;
} IccDataTagType;

/* 'curv' (10.5). 20 bytes. */
typedef struct IccCurveTagType {
  uint32_t typeSignature, reserved;
  uint32_t entryCount; /* 0: identity; 1: a gamma, u8Fixed8; else a sampled curve */
  uint16_t* entries;   /* owned */
} IccCurveTagType;

/* 'para' (10.16). 20 bytes. */
typedef struct IccParametricCurveTagType {
  uint32_t typeSignature, reserved;
  uint16_t functionType; /* 0 to 4 */
  uint16_t reserved2;
  uint32_t* parameters; /* owned, s15Fixed16: 1, 3, 4, 5 or 7 by the function */
} IccParametricCurveTagType;

/* 'mft1' (10.9) and 'mft2' (10.8). Arrays are of bytes in 'mft1', of 16-bit numbers in 'mft2'. 76 bytes. An 'mft1' tag
 * of this library has the two counts before its tables, in little-endian order, which ICC.1 does not know (intended):
 * of a tag from elsewhere the first four bytes of the tables are taken for them. */
typedef struct IccLutTagType {
  uint32_t typeSignature, reserved;
  uint8_t inputChannels, outputChannels, gridPoints, pad;
  uint32_t matrix[9]; /* by rows, s15Fixed16 */
  uint16_t inputEntries, outputEntries;
  void* inputTables;  /* owned: inputChannels x inputEntries */
  void* clut;         /* owned: gridPoints ^ inputChannels x outputChannels */
  void* outputTables; /* owned: outputChannels x outputEntries */
} IccLutTagType;

/* The CLUT of 'mAB ' and 'mBA ' (10.10.6). 32 bytes. */
typedef struct IccClut {
  uint8_t gridPoints[16]; /* by input channel */
  uint8_t precision;      /* bytes of an element: 1 or 2 */
  uint8_t reserved[3];
  uint32_t elementCount; /* the product of the grid points, times the output channels; in host order always */
  void* elements;        /* owned */
} IccClut;

/* Either by its own signature. */
typedef union IccCurveElement {
  IccCurveTagType curve;
  IccParametricCurveTagType parametric;
} IccCurveElement;

/* 'mAB ' (10.10) and 'mBA ' (10.11). Null stands for a part that the tag does not have. 52 bytes. */
typedef struct IccLutAToBTagType {
  uint32_t typeSignature, reserved;
  uint8_t inputChannels, outputChannels;
  uint16_t reserved2;
  IccCurveElement* bCurves; /* owned, one for each channel of the connection space: outputChannels of 'mAB ',
                             * inputChannels of 'mBA ' */
  uint32_t* matrix;         /* owned, twelve s15Fixed16 */
  IccCurveElement* mCurves; /* owned, as many as B curves */
  IccClut* clut;            /* owned */
  IccCurveElement* aCurves; /* owned, one for each channel of the device */
} IccLutAToBTagType;

/* A text of 'mluc'. 16 bytes. */
typedef struct IccLocalizedText {
  uint16_t language, country; /* two characters each: ISO 639-1, ISO 3166-1 */
  uint32_t textBytes;
  uint16_t* text; /* owned: UTF-16, textBytes / 2 units; zeros follow */
} IccLocalizedText;

/* 'mluc' (10.13). 20 bytes. */
typedef struct IccMultiLocalizedTagType {
  uint32_t typeSignature, reserved;
  uint32_t recordCount;
  IccLocalizedText* records; /* owned */
} IccMultiLocalizedTagType;

/* 'chrm' (10.2). 20 bytes. */
typedef struct IccChromaticityTagType {
  uint32_t typeSignature, reserved;
  uint16_t channelCount;
  uint16_t colorantType;
  uint32_t* coordinates; /* owned: x and y of each channel, u16Fixed16 */
} IccChromaticityTagType;

/* 'clro' (10.3). 20 bytes. */
typedef struct IccColorantOrderTagType {
  uint32_t typeSignature, reserved;
  uint32_t colorantCount;
  uint8_t* order; /* owned: numbers of the colorants in laydown order */
} IccColorantOrderTagType;

typedef struct IccColorant {
  char name[32];
  uint16_t pcs[3];
} IccColorant;

/* 'clrt' (10.4). 20 bytes. */
typedef struct IccColorantTableTagType {
  uint32_t typeSignature, reserved;
  uint32_t colorantCount;
  IccColorant* colorants; /* owned */
} IccColorantTableTagType;

typedef struct IccNamedColor {
  char name[32];
  uint16_t pcs[3];
  uint16_t* device; /* owned: deviceChannels coordinates */
} IccNamedColor;

/* 'ncl2' (10.15). 92 bytes. */
typedef struct IccNamedColorsTagType {
  uint32_t typeSignature, reserved;
  uint32_t vendorFlags;
  uint32_t colorCount;
  uint32_t deviceChannels; /* 0: no device coordinates */
  char prefix[32], suffix[32];
  IccNamedColor* colors; /* owned */
} IccNamedColorsTagType;

/* A profile of 'pseq'. Its texts are whole 'mluc' or 'desc' types, as their bytes stand in the tag. 44 bytes. */
typedef struct IccProfileDescription {
  uint32_t manufacturer, model;
  uint64_t attributes;
  uint32_t technology;
  uint8_t* manufacturerText; /* owned */
  uint32_t manufacturerTextBytes;
  uint8_t* modelText; /* owned */
  uint32_t modelTextBytes;
} IccProfileDescription;

/* 'pseq' (10.17). 20 bytes. */
typedef struct IccProfileSequenceTagType {
  uint32_t typeSignature, reserved;
  uint32_t profileCount;
  IccProfileDescription* profiles; /* owned */
} IccProfileSequenceTagType;

typedef struct IccResponse {
  uint16_t deviceCode;
  uint16_t reserved;
  uint32_t value; /* s15Fixed16 */
} IccResponse;

/* The curves of one measurement unit, channel after channel. 28 bytes. */
typedef struct IccResponseCurves {
  uint32_t measurementUnit;
  uint32_t* counts;       /* owned: responses of each channel */
  uint32_t* maxima;       /* owned: X, Y, Z of each channel's maximum, s15Fixed16 */
  IccResponse* responses; /* owned: as many as the counts add up to */
} IccResponseCurves;

/* 'rcs2' (10.19). 20 bytes. */
typedef struct IccResponseCurveSetTagType {
  uint32_t typeSignature, reserved;
  uint16_t channelCount;
  uint16_t unitCount;
  IccResponseCurves* units; /* owned */
} IccResponseCurveSetTagType;
#pragma pack(pop)

/* Zeroes the first `size` bytes of a record and sets structSize. Releases nothing. Null, or a size above 56: -13. */
Q_EXPORTED int32_t Q_InitICCProfile(IccProfileRecord* pProfile, uint32_t size);

/* Releases what the record holds and clears its pointers; its numbers stay. Only Q_InitICCProfile makes it usable
 * again. */
Q_EXPORTED void Q_FreeICCProfile(IccProfileRecord* pProfile);

/* Gives a fresh record a header: version 4.2.0, 'acsp', the D50 illuminant, a size of 132, and 0 elsewhere. An existing
 * header is reset. Null: -13; memory: -1. */
Q_EXPORTED int32_t Q_InitICCHeader(IccProfileRecord* pProfile);

/* Setters of the header. A null record, a record without header, or a value that is not accepted: -13. */
Q_EXPORTED int32_t Q_SetICCCMMType(IccProfileRecord* pProfile, uint32_t value);
Q_EXPORTED int32_t Q_SetICCDeviceClass(IccProfileRecord* pProfile, uint32_t value); /* a class of ICC.1 7.2.5 */
Q_EXPORTED int32_t Q_SetICCColorSpace(IccProfileRecord* pProfile, uint32_t value);  /* a space of ICC.1 7.2.6 */
/* 'XYZ ' or 'Lab '; after class 'link', any colour space. The class must have been set. */
Q_EXPORTED int32_t Q_SetICCConnectionSpace(IccProfileRecord* pProfile, uint32_t value);
Q_EXPORTED int32_t Q_SetICCDateTime(IccProfileRecord* pProfile, const IccDateTime* pDateTime); /* null: -13 */
Q_EXPORTED int32_t Q_SetICCPrimaryPlatform(IccProfileRecord* pProfile, uint32_t value);        /* the four or 0 */
Q_EXPORTED int32_t Q_SetICCFlags(IccProfileRecord* pProfile, uint32_t value);                  /* keeps bits 1 and 2 */
Q_EXPORTED int32_t Q_SetICCDevManufacturer(IccProfileRecord* pProfile, uint32_t value);
Q_EXPORTED int32_t Q_SetICCDevModel(IccProfileRecord* pProfile, uint32_t value);
Q_EXPORTED int32_t Q_SetICCDeviceAttributes(IccProfileRecord* pProfile, uint64_t value); /* keeps bits 1 to 8 */
Q_EXPORTED int32_t Q_SetICCRenderingIntent(IccProfileRecord* pProfile, uint32_t value);  /* 0 to 3 */
Q_EXPORTED int32_t Q_SetICCCreator(IccProfileRecord* pProfile, uint32_t value);
/* Clears the profile ID. Without a header: 1, and nothing is done. */
Q_EXPORTED int32_t Q_SetICCProfileId(IccProfileRecord* pProfile);

/* The type signature of the first tag of this signature (not a status); 0 when there is none or its bytes lie outside
 * of the data area. */
Q_EXPORTED uint32_t Q_GetICCTagTypeSig(const IccProfileRecord* pProfile, uint32_t tagSignature);

/* Reading and writing tags. The work is done also when the status is
 * ERR_ICC_PRIVATE_TAG (the signature is not a registered one), ERR_ICC_UNKNOWN_TAG_TYPE (the type is not decoded: the
 * structure is an IccUnknownTagType) or ERR_ICC_PRIVATE_TAG_UNKNOWN_TYPE (both). The structure is that of the type.
 *
 * Get: the first tag of the signature. Null: -13; none: -37; bytes outside of the data area, or parts that share bytes
 * and come to 64 MiB more than there are: -1153; memory: -1.
 * Set: appends a tag, even to others of its signature, from a structure in host order; typeSignature tells the type.
 * Null, no header, or an array that is null or not readable for its count: -13; memory, or a profile above 4 GiB: -1.
 */
Q_EXPORTED int32_t Q_GetICCTagData(const IccProfileRecord* pProfile, void* pTag, uint32_t tagSignature);
Q_EXPORTED int32_t Q_SetICCTagData(IccProfileRecord* pProfile, const void* pTag, uint32_t tagSignature,
                                   uint32_t typeSignature);

/* What set writes and get fills, beside what the comments of the types say: set writes reserved words and bytes
 * (`reserved`, `reserved2`, `pad`) as zeros; get leaves out what follows the counted elements of a tag. A function of
 * 'para' that is not known: -37 from get, -13 from set. Numbers of table elements above 32 bits: -1153. */

/* Parameters of a 'para' function (a count, not a status); 0 for an unknown one. */
Q_EXPORTED int32_t Q_GetParametricCurveNumberOfParameters(uint32_t functionType);

/* Copy a structure's numbers as they stand in memory into a buffer: the tag's bytes when the structure is in file
 * order. Null: -13. The buffer's size is not checked: 12 + 2 x entryCount bytes (a 'curv' is recognised in either
 * order), 12 + 4 x parameters bytes (a 'para' only in host order; of file order, 12: intended), 20 + precision x
 * elementCount bytes. */
Q_EXPORTED int32_t Q_ConvertCurveTypeToBuffer(void* pBuffer, const IccCurveTagType* pCurve);
Q_EXPORTED int32_t Q_ConvertParametricCurveTypeToBuffer(void* pBuffer, const IccParametricCurveTagType* pCurve);
Q_EXPORTED int32_t Q_ConvertCLUTToBuffer(void* pBuffer, const IccClut* pClut);

/* A deep copy in file order of a structure in host order. Null: -13; memory: -1; a type that is not decoded: the copy
 * is made and -1151 returned. */
Q_EXPORTED int32_t Q_CreateICCTagData(void* pDst, const void* pSrc, uint32_t typeSignature);

/* Releases the arrays of a structure and clears their pointers; null is allowed. */
Q_EXPORTED void Q_FreeICCTagType(void* pTag, uint32_t typeSignature);

/* Removes the first tag of the signature and clears the profile ID. With pTag the tag is read first, and removed only
 * when that returns 1. Another entry that shares its bytes keeps its size and now covers what stands before them, or
 * lies outside of the data area (intended); padding stays. Null, no header or no tags: -13; none of the signature: -37;
 * bytes outside of the data area: -1153; memory: -1. */
Q_EXPORTED int32_t Q_DeleteICCTag(IccProfileRecord* pProfile, uint32_t tagSignature, void* pTag);

/* Fills a fresh record from the bytes of a profile of version 4.0 or later. Of its header only the version is tested.
 * What its size field promises beyond `length` reads as 0. Null or no bytes: -13; an older version, less than 132
 * bytes, or a tag table that does not fit in them: -1153; a size field that does not cover the tag table, or memory:
 * -1. */
Q_EXPORTED int32_t Q_FillICCProfileStructure(IccProfileRecord* pProfile, const void* pBytes, uint32_t length);

/* The same from a file, for versions 4.0.0 and 4.2.0 exactly; of any other version only profileBytes and
 * profileByteSize are filled (intended). Null: -13; the file cannot be opened: -14, or read: -7; a declared size of 0:
 * -1153; memory: -1. A narrow name that cannot be converted: -1. */
Q_EXPORTED int32_t Q_FillICCProfileFromICCFile(const QWChar* pFileName, IccProfileRecord* pProfile);
Q_EXPORTED int32_t Q_FillICCProfileFromICCFileA(const char* pFileName, IccProfileRecord* pProfile);

/* Makes profileBytes from header, table and data; the reserved bytes of the header become 0. Null or no header: -13; a
 * header whose profileSize is not the sum of the parts, or less data than the record claims: -1153; memory: -1. */
Q_EXPORTED int32_t Q_GenerateICCPointer(IccProfileRecord* pProfile);

/* Writes profileBytes as it stands; an existing file is replaced. Null: -13; profileBytes that is shorter than
 * profileByteSize: -1153; the file cannot be opened: -14, or written: -5. A narrow name that cannot be converted: -1.
 */
Q_EXPORTED int32_t Q_GenerateICCFile(IccProfileRecord* pProfile, const QWChar* pFileName);
Q_EXPORTED int32_t Q_GenerateICCFileA(IccProfileRecord* pProfile, const char* pFileName);

/* Finds the profile of an image file (TIFF, JPEG, PostScript, QuickDraw picture, told by its content) and puts its
 * bytes into profileBytes, without looking into them: Q_FillICCProfileStructure does. What the record held before is
 * released, but put back when there is none (-812). Null: -13; structSize: -789; the file cannot be read: -10; another
 * format, GIF among them: -1154; a damaged file or profile: -813, and nothing behind the begin in PostScript: -817;
 * memory, or a JPEG segment of 13 bytes: -1. The options are not used.
 *
 * JPEG: the segments before the first scan are joined in the order of the file. TIFF: the first directory. PostScript:
 * lines must end in CR or CR LF, and of the hexadecimal data the last 1 to 80 bytes are dropped (intended). */
Q_EXPORTED int32_t Q_LoadICCProfile(const QWChar* pFileName, IccProfileRecord* pProfile, void* pLoadOptions);
Q_EXPORTED int32_t Q_LoadICCProfileA(const char* pFileName, IccProfileRecord* pProfile, void* pLoadOptions);

/* Embeds profileBytes as it stands into a TIFF, JPEG or GIF file; of 0 bytes, removes the profile of a TIFF or JPEG. A
 * TIFF or JPEG file is written anew beside the old one and takes its place in one step; no pixel changes. Null: -13;
 * structSize: -789; profileBytes shorter than profileByteSize: -1153; the file cannot be read: -10; another format:
 * -1154; a damaged file: -813; a file that cannot be created beside it: -14, or written: -5; a profile of more than 255
 * JPEG segments: -1. GIF: no bytes: -13; the extension goes before the trailer, with 0, 1, 2 as its key (intended);
 * cannot be opened: -14. Memory: -5, 8 for the buffer of a JPEG segment (intended). */
Q_EXPORTED int32_t Q_SaveICCProfile(const QWChar* pFileName, IccProfileRecord* pProfile, void* pSaveOptions);
Q_EXPORTED int32_t Q_SaveICCProfileA(const char* pFileName, IccProfileRecord* pProfile, void* pSaveOptions);

/* Fixed-point numbers. The decoders read unsigned numbers: value / 256 and value / 65536.
 *
 * The encoders work digit by digit in base 16, and callers see how (intended): a fraction is appended to the whole part
 * as up to two (four) digits, the last one rounded without carry, and only a number without fraction is moved to its
 * place. So 2.0 becomes 0x00020000, but 1.5 becomes 0x18 and 0.1 becomes 0x199A; the fraction of a negative number is
 * dropped. */
Q_EXPORTED double Q_U8Fixed8NumberToDouble(uint16_t value);
Q_EXPORTED uint16_t Q_DoubleToU8Fixed8Number(double value);
Q_EXPORTED double Q_2bFixed2bNumberToDouble(uint32_t value);
Q_EXPORTED uint32_t Q_DoubleTo2bFixed2bNumber(double value);

#ifdef __cplusplus
}
#endif
#endif
