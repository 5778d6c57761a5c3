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
  /// The items of each format as they were after so many changes of the movie's; none at first.
  std::vector<std::vector<quillmere::movies::MetadataItem>> items = {};
  UInt64 changes_seen = 0;
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

/// All items by format, read anew when something has changed them.
std::vector<std::vector<MetadataItem>>& ItemsOf(QTMetaData* metadata) {
  const UInt64 changes = metadata->movie->metadata_changes;
  if (!metadata->items.empty() && metadata->changes_seen == changes) return metadata->items;
  const Atom* owner = OwnerOf(*metadata);
  metadata->items.clear();
  for (const auto& format : MetadataFormats())
    metadata->items.push_back(owner != nullptr ? format->Read(*owner)
                                               : std::vector<MetadataItem>());
  metadata->changes_seen = changes;
  return metadata->items;
}

/// Writes the items of a format into the owner.
OSStatus WriteItems(QTMetaData* metadata, std::size_t format,
                    const std::vector<MetadataItem>& items) {
  Atom* owner = OwnerOf(*metadata);
  if (owner == nullptr) return invalidMedia;
  if (items.size() > kMostMetadataItems) return memFullErr;
  ++metadata->movie->metadata_changes;
  const OSStatus status = MetadataFormats()[format]->Write(owner, items);
  if (metadata->track == nullptr) FindTrackAtoms(metadata->movie);
  return status;
}

/// Where an item is kept.
struct ItemPlace {
  std::size_t format = 0;
  std::size_t place = 0;
};

OSStatus FindItem(QTMetaDataRef metadata, QTMetaDataItem number, ItemPlace* place) {
  if (metadata == nullptr) return paramErr;
  const auto& items = ItemsOf(metadata);
  const UInt64 format = number >> 32;
  if (format < 1 || format > items.size()) return kQTMetaDataInvalidItemErr;
  *place = {static_cast<std::size_t>(format - 1), static_cast<std::size_t>(number & 0xFFFFFFFF)};
  const bool is_there = place->place < items[place->format].size();
  return is_there ? OSStatus{noErr} : OSStatus{kQTMetaDataInvalidItemErr};
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

/// Calls `visit(number)` for the items behind one that a filter takes until it gives false.
template <class Visit>
void ForEachItem(QTMetaData* metadata, const Filter& filter, QTMetaDataItem behind, Visit visit) {
  const auto& items = ItemsOf(metadata);
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!filter.Takes(*MetadataFormats()[i])) continue;
    std::size_t place = 0;
    if (behind >= NumberOf(i, 0)) place = static_cast<std::size_t>(behind - NumberOf(i, 0)) + 1;
    for (; place < items[i].size(); ++place) {
      if (filter.Takes(items[i][place]) && !visit(NumberOf(i, place))) return;
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
OSStatus ItemProperty(const MetadataFormat& format, const MetadataItem& item, OSType id,
                      std::vector<UInt8>* bytes) {
  switch (id) {
    case "valu"_4cc:
      *bytes = item.value;
      return noErr;
    case "key "_4cc:
      *bytes = item.key;
      return noErr;
    case "dtyp"_4cc:
      *bytes = BytesOf(item.data_type);
      return noErr;
    case "sfmt"_4cc:
      *bytes = BytesOf(format.storage_format());
      return noErr;
    case "keyf"_4cc:
      *bytes = BytesOf(format.key_format());
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
  if (property_class != kItemClass) return kQTPropertyNotSupportedErr;
  return ItemProperty(*MetadataFormats()[place.format], metadata->items[place.format][place.place],
                      id, bytes);
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
    bytes->clear();
    const auto& items = ItemsOf(metadata);
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (items[i].empty()) continue;
      const std::vector<UInt8> code = BytesOf(MetadataFormats()[i]->storage_format());
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
  ForEachItem(metadata, filter, item, [next](QTMetaDataItem number) {
    *next = number;
    return false;
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
  ForEachItem(metadata, filter, kQTMetaDataItemUninitialized,
              [count](QTMetaDataItem) { return ++*count > 0; });
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
  if (format == formats.end()) return kQTMetaDataInvalidStorageFormatErr;
  const auto index = static_cast<std::size_t>(format - formats.begin());
  std::vector<MetadataItem> items = ItemsOf(metadata)[index];
  items.push_back({{key, key + key_size}, {value, value + value_size}, data_type, 0});
  const OSStatus status = WriteItems(metadata, index, items);
  if (status == noErr && item != nullptr) *item = NumberOf(index, items.size() - 1);
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
  std::vector<MetadataItem> items = metadata->items[place.format];
  MetadataItem& changed = items[place.place];
  if (property_class == kItemClass && property_id == "valu"_4cc) {
    changed.value.assign(bytes, bytes + size);
  } else if (property_class == kItemClass && property_id == "loc "_4cc) {
    if (size != sizeof(UInt32)) return paramErr;
    std::memcpy(&changed.locale, bytes, sizeof(UInt32));
  } else {
    return kQTPropertyNotSupportedErr;
  }
  return WriteItems(metadata, place.format, items);
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
