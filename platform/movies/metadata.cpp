#include "metadata.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "metadata_formats.h"
#include "toolbox_records.h"

struct QTMetaData {
  MovieRecord* movie;
  TrackRecord* track;  ///< null for a movie's
  bool is_media;
};

using namespace quillmere::movies;

namespace {

constexpr OSType kItemClass = "mdit"_4cc;

Atom* OwnerOf(const QTMetaData& metadata) {
  if (metadata.track == nullptr) return metadata.movie->file.movie.get();
  Atom& trak = TrackAtom(*metadata.track);
  return metadata.is_media ? trak.Find("mdia"_4cc) : &trak;
}

/// An item's number: which format, from 1, and which of its items, from 0.
QTMetaDataItem NumberOf(std::size_t format, std::size_t place) {
  return (static_cast<UInt64>(format + 1) << 32) | place;
}

/// Where an item is kept.
struct ItemPlace {
  const MetadataFormat* format = nullptr;
  std::vector<MetadataItem> items;  ///< all of the format
  std::size_t place = 0;
  MetadataItem& item() { return items[place]; }
};

OSStatus FindItem(QTMetaDataRef metadata, QTMetaDataItem number, ItemPlace* place) {
  if (metadata == nullptr) return paramErr;
  const auto& formats = MetadataFormats();
  const UInt64 format = number >> 32;
  const Atom* owner = OwnerOf(*metadata);
  if (format < 1 || format > formats.size() || owner == nullptr) return kQTMetaDataInvalidItemErr;
  place->format = formats[format - 1].get();
  place->items = place->format->Read(*owner);
  place->place = static_cast<std::size_t>(number & 0xFFFFFFFF);
  return place->place < place->items.size() ? OSStatus{noErr} : OSStatus{kQTMetaDataInvalidItemErr};
}

/// What a walk looks for.
struct Filter {
  OSType storage_format;
  OSType key_format;
  std::span<const UInt8> key;

  bool Takes(const MetadataFormat& format) const {
    return (storage_format == 0 || storage_format == format.storage_format()) &&
           (key_format == 0 || key_format == format.key_format());
  }
  bool Takes(const MetadataItem& item) const {
    return key_format == 0 || std::ranges::equal(item.key, key);
  }
};

/// Calls `visit(number)` for the items that a filter takes until it gives false.
template <class Visit>
void ForEachItem(const QTMetaData& metadata, const Filter& filter, Visit visit) {
  const Atom* owner = OwnerOf(metadata);
  const auto& formats = MetadataFormats();
  for (std::size_t i = 0; owner != nullptr && i < formats.size(); ++i) {
    if (!filter.Takes(*formats[i])) continue;
    const std::vector<MetadataItem> items = formats[i]->Read(*owner);
    for (std::size_t place = 0; place < items.size(); ++place) {
      if (filter.Takes(items[place]) && !visit(NumberOf(i, place))) return;
    }
  }
}

OSStatus MakeReference(MovieRecord* movie, TrackRecord* track, bool is_media,
                       QTMetaDataRef* metadata) {
  if (metadata == nullptr) return paramErr;
  *metadata = new QTMetaData{movie, track, is_media};
  return noErr;
}

std::vector<UInt8> BytesOf(UInt32 value) {
  std::vector<UInt8> bytes(sizeof value);
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

/// A property as the bytes that a caller gets: numbers in native order.
OSStatus ItemProperty(ItemPlace* place, OSType id, std::vector<UInt8>* bytes) {
  MetadataItem& item = place->item();
  switch (id) {
    case "valu"_4cc:
      *bytes = std::move(item.value);
      return noErr;
    case "key "_4cc:
      *bytes = std::move(item.key);
      return noErr;
    case "dtyp"_4cc:
      *bytes = BytesOf(item.data_type);
      return noErr;
    case "sfmt"_4cc:
      *bytes = BytesOf(place->format->storage_format());
      return noErr;
    case "keyf"_4cc:
      *bytes = BytesOf(place->format->key_format());
      return noErr;
    case "loc "_4cc:
      if (item.locale == 0) return kQTPropertyNotSupportedErr;
      *bytes = BytesOf(item.locale);
      return noErr;
    default:
      return kQTPropertyNotSupportedErr;
  }
}

OSStatus GetItemBytes(QTMetaDataRef metadata, QTMetaDataItem item, OSType property_class, OSType id,
                      std::vector<UInt8>* bytes) {
  ItemPlace place;
  const OSStatus status = FindItem(metadata, item, &place);
  if (status != noErr) return status;
  return property_class == kItemClass ? ItemProperty(&place, id, bytes)
                                      : OSStatus{kQTPropertyNotSupportedErr};
}

OSStatus GetBytes(QTMetaDataRef metadata, OSType property_class, OSType id,
                  std::vector<UInt8>* bytes) {
  if (metadata == nullptr) return paramErr;
  if (property_class != "meta"_4cc) return kQTPropertyNotSupportedErr;
  const bool is_movie = metadata->track == nullptr;
  if (id == "ownt"_4cc) {
    *bytes = BytesOf(is_movie ? "moov"_4cc : metadata->is_media ? "mdia"_4cc : "trak"_4cc);
  } else if (id == "ownr"_4cc) {
    *bytes = BytesOf(is_movie ? 0 : TrackHeaderOf(*metadata->track).id);
  } else if (id == "fmts"_4cc) {
    const Atom* owner = OwnerOf(*metadata);
    bytes->clear();
    for (const auto& format : MetadataFormats()) {
      if (owner == nullptr || format->Read(*owner).empty()) continue;
      const std::vector<UInt8> code = BytesOf(format->storage_format());
      bytes->insert(bytes->end(), code.begin(), code.end());
    }
  } else {
    return kQTPropertyNotSupportedErr;
  }
  return noErr;
}

OSStatus StoreBytes(const std::vector<UInt8>& bytes, ByteCount size, void* value,
                    ByteCount* size_used) {
  if (size_used != nullptr) *size_used = bytes.size();
  if (value == nullptr || size < bytes.size())
    return value == nullptr ? OSStatus{paramErr} : OSStatus{kQTPropertyBufferTooSmallErr};
  std::ranges::copy(bytes, static_cast<UInt8*>(value));
  return noErr;
}

/// The type a property is of: bytes, or a code.
OSType TypeOfProperty(OSType id) {
  return id == "valu"_4cc || id == "key "_4cc ? "data"_4cc : "code"_4cc;
}

void StoreInfo(OSType id, std::size_t bytes, OSType* type, ByteCount* size, UInt32* flags) {
  if (type != nullptr) *type = TypeOfProperty(id);
  if (size != nullptr) *size = bytes;
  if (flags != nullptr) *flags = 0;
}

}  // namespace

OSStatus QTCopyMovieMetaData(Movie movie, QTMetaDataRef* metadata) {
  return movie != nullptr ? MakeReference(movie, nullptr, false, metadata) : OSStatus{invalidMovie};
}

OSStatus QTCopyTrackMetaData(Track track, QTMetaDataRef* metadata) {
  return track != nullptr ? MakeReference(track->movie, track, false, metadata)
                          : OSStatus{invalidTrack};
}

OSStatus QTCopyMediaMetaData(Media media, QTMetaDataRef* metadata) {
  return media != nullptr ? MakeReference(media->track->movie, media->track, true, metadata)
                          : OSStatus{invalidMedia};
}

void QTMetaDataRelease(QTMetaDataRef metadata) {
  delete metadata;
}

OSStatus QTMetaDataGetNextItem(QTMetaDataRef metadata, OSType storage_format, QTMetaDataItem item,
                               OSType key_format, const UInt8* key, ByteCount key_size,
                               QTMetaDataItem* next) {
  if (metadata == nullptr || next == nullptr) return paramErr;
  *next = kQTMetaDataItemUninitialized;
  const Filter filter = {storage_format, key_format, {key, key != nullptr ? key_size : 0}};
  ForEachItem(*metadata, filter, [&](QTMetaDataItem number) {
    if (number > item) *next = number;
    return *next == kQTMetaDataItemUninitialized;
  });
  return *next != kQTMetaDataItemUninitialized ? OSStatus{noErr}
                                               : OSStatus{kQTMetaDataNoMoreItemsErr};
}

OSStatus QTMetaDataGetItemCountWithKey(QTMetaDataRef metadata, OSType storage_format,
                                       OSType key_format, const UInt8* key, ByteCount key_size,
                                       ItemCount* count) {
  if (metadata == nullptr || count == nullptr) return paramErr;
  *count = 0;
  const Filter filter = {storage_format, key_format, {key, key != nullptr ? key_size : 0}};
  ForEachItem(*metadata, filter, [&](QTMetaDataItem) { return ++*count > 0; });
  return noErr;
}

OSStatus QTMetaDataAddItem(QTMetaDataRef metadata, OSType storage_format, OSType key_format,
                           const UInt8* key, ByteCount key_size, const UInt8* value,
                           ByteCount value_size, UInt32 data_type, QTMetaDataItem* item) {
  if (metadata == nullptr || key == nullptr || (value == nullptr && value_size > 0))
    return paramErr;
  const auto& formats = MetadataFormats();
  const auto format = std::ranges::find_if(formats, [&](const auto& each) {
    return each->storage_format() == storage_format && each->key_format() == key_format;
  });
  Atom* owner = OwnerOf(*metadata);
  if (format == formats.end() || owner == nullptr) return kQTMetaDataInvalidStorageFormatErr;
  std::vector<MetadataItem> items = (*format)->Read(*owner);
  items.push_back({{key, key + key_size}, {value, value + value_size}, data_type, 0});
  const OSStatus status = (*format)->Write(owner, items);
  if (metadata->track == nullptr) FindTrackAtoms(metadata->movie);
  if (status == noErr && item != nullptr)
    *item = NumberOf(static_cast<std::size_t>(format - formats.begin()), items.size() - 1);
  return status;
}

OSStatus QTMetaDataGetItemPropertyInfo(QTMetaDataRef metadata, QTMetaDataItem item,
                                       OSType property_class, OSType property_id, OSType* type,
                                       ByteCount* size, UInt32* flags) {
  std::vector<UInt8> bytes;
  const OSStatus status = GetItemBytes(metadata, item, property_class, property_id, &bytes);
  if (status == noErr) StoreInfo(property_id, bytes.size(), type, size, flags);
  return status;
}

OSStatus QTMetaDataGetItemProperty(QTMetaDataRef metadata, QTMetaDataItem item,
                                   OSType property_class, OSType property_id, ByteCount size,
                                   void* value, ByteCount* size_used) {
  std::vector<UInt8> bytes;
  const OSStatus status = GetItemBytes(metadata, item, property_class, property_id, &bytes);
  return status == noErr ? StoreBytes(bytes, size, value, size_used) : status;
}

OSStatus QTMetaDataSetItemProperty(QTMetaDataRef metadata, QTMetaDataItem item,
                                   OSType property_class, OSType property_id, ByteCount size,
                                   const void* value) {
  ItemPlace place;
  const OSStatus status = FindItem(metadata, item, &place);
  if (status != noErr) return status;
  if (value == nullptr && size > 0) return paramErr;
  const auto* bytes = static_cast<const UInt8*>(value);
  if (property_class == kItemClass && property_id == "valu"_4cc) {
    place.item().value.assign(bytes, bytes + size);
  } else if (property_class == kItemClass && property_id == "loc "_4cc) {
    if (size != sizeof(UInt32)) return paramErr;
    std::memcpy(&place.item().locale, bytes, sizeof(UInt32));
  } else {
    return kQTPropertyNotSupportedErr;
  }
  return place.format->Write(OwnerOf(*metadata), place.items);
}

OSStatus QTMetaDataGetPropertyInfo(QTMetaDataRef metadata, OSType property_class,
                                   OSType property_id, OSType* type, ByteCount* size,
                                   UInt32* flags) {
  std::vector<UInt8> bytes;
  const OSStatus status = GetBytes(metadata, property_class, property_id, &bytes);
  if (status == noErr) StoreInfo(property_id, bytes.size(), type, size, flags);
  return status;
}

OSStatus QTMetaDataGetProperty(QTMetaDataRef metadata, OSType property_class, OSType property_id,
                               ByteCount size, void* value, ByteCount* size_used) {
  std::vector<UInt8> bytes;
  const OSStatus status = GetBytes(metadata, property_class, property_id, &bytes);
  return status == noErr ? StoreBytes(bytes, size, value, size_used) : status;
}
