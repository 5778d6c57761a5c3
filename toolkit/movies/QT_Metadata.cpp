#include "QT_Metadata.h"

#include <cstdlib>
#include <vector>

#include "GL_Errors.h"
#include "reference_counted.h"
#include "user_data.h"

using quillmere::AtExit;

namespace {

constexpr OSType kItemClass = "mdit"_4cc;
constexpr OSType kOwnerClass = "meta"_4cc;

/// A property of an item in memory of its own.
SInt32 CopyProperty(QTMetaDataRef metadata, QTMetaDataItem item, OSType id, UInt8** bytes,
                    ByteCount* size) {
  *bytes = nullptr;
  *size = 0;
  SInt32 status =
      QTMetaDataGetItemPropertyInfo(metadata, item, kItemClass, id, nullptr, size, nullptr);
  if (status) return status;
  // An empty property has memory too, so that it differs from a failure.
  *bytes = static_cast<UInt8*>(std::malloc(*size > 0 ? *size : 1));
  if (*bytes == nullptr) return memFullErr;
  status = QTMetaDataGetItemProperty(metadata, item, kItemClass, id, *size, *bytes, nullptr);
  if (!status) return noErr;
  std::free(*bytes);
  *bytes = nullptr;
  *size = 0;
  return status;
}

SInt32 GetCode(QTMetaDataRef metadata, QTMetaDataItem item, OSType id, UInt32* code) {
  return QTMetaDataGetItemProperty(metadata, item, kItemClass, id, sizeof *code, code, nullptr);
}

SInt32 CopyItem(QTMetaDataRef source, QTMetaDataItem item, QTMetaDataRef destination) {
  UInt8* value = nullptr;
  UInt8* key = nullptr;
  const AtExit free([&] {
    std::free(value);
    std::free(key);
  });
  ByteCount valueSize = 0;
  ByteCount keySize = 0;
  UInt32 type = 0;
  OSType storageFormat = 0;
  OSType keyFormat = 0;
  SInt32 status = QT_GetMetaDataItemProps(source, item, &value, &valueSize, &type, &storageFormat,
                                          &keyFormat, &key, &keySize);
  QTMetaDataItem added = kQTMetaDataItemUninitialized;
  if (!status)
    status = QTMetaDataAddItem(destination, storageFormat, keyFormat, key, keySize, value,
                               valueSize, type, &added);
  return status ? status : QT_CopyMetaDataItemLocale(source, item, destination, added);
}

/// Copies between the metadata that `reference(owner, &metadata)` gives of two owners.
template <class Owner, class Reference>
SInt32 CopyBetween(Owner source, Owner destination, Reference reference) {
  QTMetaDataRef from = nullptr;
  QTMetaDataRef to = nullptr;
  const AtExit release([&] {
    QTMetaDataRelease(from);
    QTMetaDataRelease(to);
  });
  SInt32 status = reference(source, &from);
  if (!status) status = reference(destination, &to);
  return status ? status : QT_CopyMetaData(from, to);
}

}  // namespace

SInt32 QT_CopyMetaData(QTMetaDataRef source, QTMetaDataRef destination) {
  QTMetaDataItem item = kQTMetaDataItemUninitialized;
  SInt32 status = noErr;
  while (!status) {
    status = QTMetaDataGetNextItem(source, kQTMetaDataStorageFormatWildcard, item,
                                   kQTMetaDataKeyFormatWildcard, nullptr, 0, &item);
    if (!status) status = CopyItem(source, item, destination);
  }
  return status == kQTMetaDataNoMoreItemsErr ? SInt32{noErr} : status;
}

SInt32 QT_CopyMovieMetaData(Movie source, Movie destination) {
  return CopyBetween(source, destination, QTCopyMovieMetaData);
}

SInt32 QT_CopyTrackMetaData(Track source, Track destination) {
  return CopyBetween(source, destination, QTCopyTrackMetaData);
}

SInt32 QT_CopyMediaMetaData(Media source, Media destination) {
  return CopyBetween(source, destination, QTCopyMediaMetaData);
}

SInt32 QT_GetMetaDataProps(QTMetaDataRef metadata, OSType* ownerType, UInt32* owner,
                           OSType** formats, SInt32* formatCount) {
  if (formats != nullptr) *formats = nullptr;
  if (formatCount != nullptr) *formatCount = 0;
  const auto get = [metadata](OSType id, UInt32* code) {
    return code == nullptr ? SInt32{noErr}
                           : SInt32{QTMetaDataGetProperty(metadata, kOwnerClass, id, sizeof *code,
                                                          code, nullptr)};
  };
  SInt32 status = get("ownt"_4cc, ownerType);
  if (!status) status = get("ownr"_4cc, owner);
  ByteCount size = 0;
  if (!status)
    status = QTMetaDataGetPropertyInfo(metadata, kOwnerClass, "fmts"_4cc, nullptr, &size, nullptr);
  if (status) return status;
  if (formatCount != nullptr) *formatCount = static_cast<SInt32>(size / sizeof(OSType));
  if (formats == nullptr || size == 0) return noErr;
  *formats = static_cast<OSType*>(std::malloc(size));
  if (*formats == nullptr) return memFullErr;
  return QTMetaDataGetProperty(metadata, kOwnerClass, "fmts"_4cc, size, *formats, nullptr);
}

SInt32 QT_GetMetaDataItemKey(QTMetaDataRef metadata, QTMetaDataItem item, UInt8** key,
                             ByteCount* keySize) {
  return CopyProperty(metadata, item, "key "_4cc, key, keySize);
}

SInt32 QT_GetMetaDataItemValue(QTMetaDataRef metadata, QTMetaDataItem item, UInt8** value,
                               ByteCount* valueSize, UInt32* dataType) {
  const SInt32 status = CopyProperty(metadata, item, "valu"_4cc, value, valueSize);
  return status ? status : GetCode(metadata, item, "dtyp"_4cc, dataType);
}

SInt32 QT_GetMetaDataItemProps(QTMetaDataRef metadata, QTMetaDataItem item, UInt8** value,
                               ByteCount* valueSize, UInt32* dataType, OSType* storageFormat,
                               OSType* keyFormat, UInt8** key, ByteCount* keySize) {
  *key = nullptr;
  *keySize = 0;
  SInt32 status = QT_GetMetaDataItemValue(metadata, item, value, valueSize, dataType);
  if (!status) status = GetCode(metadata, item, "sfmt"_4cc, storageFormat);
  if (!status) status = GetCode(metadata, item, "keyf"_4cc, keyFormat);
  return status ? status : QT_GetMetaDataItemKey(metadata, item, key, keySize);
}

SInt32 QT_CopyMetaDataItemLocale(QTMetaDataRef source, QTMetaDataItem sourceItem,
                                 QTMetaDataRef destination, QTMetaDataItem destinationItem) {
  UInt32 locale = 0;
  if (GetCode(source, sourceItem, "loc "_4cc, &locale) != noErr) return noErr;
  return QTMetaDataSetItemProperty(destination, destinationItem, kItemClass, "loc "_4cc,
                                   sizeof locale, &locale);
}

SInt32 QT_GetMetaDataIndexedItemWithKey(QTMetaDataRef metadata, SInt32 index, OSType storageFormat,
                                        OSType keyFormat, const UInt8* key, ByteCount keySize,
                                        QTMetaDataItem* item) {
  *item = kQTMetaDataItemUninitialized;
  if (index < 1) return paramErr;
  OSType* formats = nullptr;
  SInt32 count = 0;
  const SInt32 status = QT_GetMetaDataProps(metadata, nullptr, nullptr, &formats, &count);
  const AtExit free([&] { std::free(formats); });
  if (status) return status;
  auto left = static_cast<ItemCount>(index);
  for (SInt32 i = 0; i < count; ++i) {
    if (storageFormat != 0 && formats[i] != storageFormat) continue;
    ItemCount found = 0;
    QTMetaDataGetItemCountWithKey(metadata, formats[i], keyFormat, key, keySize, &found);
    if (left > found) {
      left -= found;
      continue;
    }
    SInt32 result = noErr;
    for (; left > 0 && !result; --left)
      result = QTMetaDataGetNextItem(metadata, formats[i], *item, keyFormat, key, keySize, item);
    return result;
  }
  return kQTMetaDataNoMoreItemsErr;
}

SInt32 QT_MetaDataSetItemValue(QTMetaDataRef metadata, QTMetaDataItem item, const UInt8* value,
                               ByteCount size) {
  return QTMetaDataSetItemProperty(metadata, item, kItemClass, "valu"_4cc, size, value);
}

SInt32 QT_GetIndexedTrackFirstUserData(Movie movie, SInt32 index, OSType type, Handle data) {
  Track track = GetMovieIndTrack(movie, index);
  return track != nullptr ? QT_GetTrackFirstUserData(track, type, data) : SInt32{noErr};
}

SInt32 QT_GetTrackFirstUserData(Track track, OSType type, Handle data) {
  if (track == nullptr) return paramErr;
  return GetUserData(GetTrackUserData(track), data, type, 1);
}

SInt32 QT_AddUserDataToTrack(Track track, Handle data, OSType type, Boolean replace) {
  if (track == nullptr || data == nullptr) return paramErr;
  UserData userData = GetTrackUserData(track);
  if (replace && CountUserDataType(userData, type) > 0) {
    const SInt32 status = RemoveUserData(userData, type, 1);
    if (status) return status;
  }
  return AddUserData(userData, data, type);
}
