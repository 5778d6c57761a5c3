/// Metadata of movies, tracks and media: items with a key, a value and its type, in one of three
/// storage formats.
///
/// | storage format | kept in | key formats |
/// |---|---|---|
/// | `mdta` | `meta` with a table of keys | `mdta`, any text, such as "com.example.title" |
/// | `itms` | `meta` within user data | `itsk`, four characters |
/// | `udta` | user data | `udta`, four characters |
///
/// An owner has at most 4,096 items of a format; memFullErr beyond. Items are numbered as long as
/// no item before them goes. Statuses: paramErr, kQTMetaDataInvalidItemErr,
/// kQTMetaDataNoMoreItemsErr, kQTPropertyNotSupportedErr, kQTMetaDataInvalidStorageFormatErr,
/// kQTMetaDataInvalidKeyErr; -2184 for room that is too small.
#pragma once

#include "movie_toolbox.h"

struct QTMetaData;
using QTMetaDataRef = QTMetaData*;
using QTMetaDataItem = UInt64;

inline constexpr QTMetaDataItem kQTMetaDataItemUninitialized = 0;
inline constexpr OSType kQTMetaDataStorageFormatQuickTime = "mdta"_4cc;
inline constexpr OSType kQTMetaDataStorageFormatiTunes = "itms"_4cc;
inline constexpr OSType kQTMetaDataStorageFormatUserData = "udta"_4cc;
/// For any format, of storage or keys.
inline constexpr OSType kQTMetaDataStorageFormatWildcard = 0;
inline constexpr OSType kQTMetaDataKeyFormatWildcard = 0;
inline constexpr OSType kQTMetaDataKeyFormatQuickTime = "mdta"_4cc;
inline constexpr OSType kQTMetaDataKeyFormatiTunesShortForm = "itsk"_4cc;
inline constexpr OSType kQTMetaDataKeyFormatUserData = "udta"_4cc;

/// Types of values.
inline constexpr UInt32 kQTMetaDataTypeBinary = 0;
inline constexpr UInt32 kQTMetaDataTypeUTF8 = 1;
inline constexpr UInt32 kQTMetaDataTypeUTF16BE = 2;
inline constexpr UInt32 kQTMetaDataTypeMacEncodedText = 3;

inline constexpr OSErr kQTMetaDataInvalidItemErr = -2175;
inline constexpr OSErr kQTMetaDataInvalidStorageFormatErr = -2176;
inline constexpr OSErr kQTMetaDataNoMoreItemsErr = -2177;
inline constexpr OSErr kQTMetaDataInvalidKeyErr = -2180;
inline constexpr OSErr kQTPropertyBufferTooSmallErr = -2184;

/// The metadata of an open movie or of a part of it, which has to outlive it; the caller releases
/// it.
OSStatus QTCopyMovieMetaData(Movie movie, QTMetaDataRef* metadata);
OSStatus QTCopyTrackMetaData(Track track, QTMetaDataRef* metadata);
OSStatus QTCopyMediaMetaData(Media media, QTMetaDataRef* metadata);
void QTMetaDataRelease(QTMetaDataRef metadata);

/// The item behind another one, uninitialized for the first, of a storage format and, unless the
/// key format is 0, with a key; kQTMetaDataNoMoreItemsErr behind the last.
OSStatus QTMetaDataGetNextItem(QTMetaDataRef metadata, OSType storage_format, QTMetaDataItem item,
                               OSType key_format, const UInt8* key, ByteCount key_size,
                               QTMetaDataItem* next);
OSStatus QTMetaDataGetItemCountWithKey(QTMetaDataRef metadata, OSType storage_format,
                                       OSType key_format, const UInt8* key, ByteCount key_size,
                                       ItemCount* count);
/// Adds an item behind those of its storage format; `item` may be null.
OSStatus QTMetaDataAddItem(QTMetaDataRef metadata, OSType storage_format, OSType key_format,
                           const UInt8* key, ByteCount key_size, const UInt8* value,
                           ByteCount value_size, UInt32 data_type, QTMetaDataItem* item);

/// Properties of an item, class `mdit`: `valu` and `key ` (bytes), `dtyp`, `sfmt` and `keyf` (32
/// bits), and, of items in a language, `loc ` (32 bits: country and language as the format has
/// them). The first tells a property's size; `valu` and `loc ` can be set.
OSStatus QTMetaDataGetItemPropertyInfo(QTMetaDataRef metadata, QTMetaDataItem item,
                                       OSType property_class, OSType property_id, OSType* type,
                                       ByteCount* size, UInt32* flags);
OSStatus QTMetaDataGetItemProperty(QTMetaDataRef metadata, QTMetaDataItem item,
                                   OSType property_class, OSType property_id, ByteCount size,
                                   void* value, ByteCount* size_used);
OSStatus QTMetaDataSetItemProperty(QTMetaDataRef metadata, QTMetaDataItem item,
                                   OSType property_class, OSType property_id, ByteCount size,
                                   const void* value);
/// Properties of metadata, class `meta`: `ownt`, of what it is (`moov`, `trak` or `mdia`), `ownr`,
/// which (its track's id, 0 for a movie), and `fmts`, the storage formats that hold items: 32 bits
/// each.
OSStatus QTMetaDataGetPropertyInfo(QTMetaDataRef metadata, OSType property_class,
                                   OSType property_id, OSType* type, ByteCount* size,
                                   UInt32* flags);
OSStatus QTMetaDataGetProperty(QTMetaDataRef metadata, OSType property_class, OSType property_id,
                               ByteCount size, void* value, ByteCount* size_used);
