#include "metadata_formats.h"

#include <algorithm>
#include <map>
#include <span>
#include <utility>

#include "big_endian.h"
#include "metadata.h"

namespace quillmere::movies {

namespace {

constexpr std::size_t kHeader = 8;
constexpr OSType kDataAtom = "data"_4cc;

/// Calls `visit(type, content)` for the atoms that stand one behind the other; what doesn't hold
/// together ends the walk.
template <class Visit>
void ForEachAtom(std::span<const UInt8> bytes, Visit visit) {
  while (bytes.size() >= kHeader) {
    const UInt32 size = ReadU32(bytes.data());
    if (size < kHeader || size > bytes.size()) return;
    visit(ReadU32(bytes.data() + 4), bytes.subspan(kHeader, size - kHeader));
    bytes = bytes.subspan(size);
  }
}

std::vector<UInt8> Bytes(std::span<const UInt8> bytes) {
  return {bytes.begin(), bytes.end()};
}

std::vector<UInt8> CodeBytes(OSType code) {
  std::vector<UInt8> bytes;
  AppendU32(&bytes, code);
  return bytes;
}

void AppendAtom(OSType type, std::span<const UInt8> content, std::vector<UInt8>* bytes) {
  AppendU32(bytes, static_cast<UInt32>(kHeader + content.size()));
  AppendU32(bytes, type);
  bytes->insert(bytes->end(), content.begin(), content.end());
}

OSType HandlerOf(const Atom& meta) {
  const Atom* hdlr = meta.Find("hdlr"_4cc);
  return hdlr != nullptr && hdlr->payload().size() >= 12 ? ReadU32(hdlr->payload().data() + 8) : 0;
}

Atom MakeHandler(OSType type, OSType manufacturer) {
  std::vector<UInt8> bytes(8);
  AppendU32(&bytes, type);
  AppendU32(&bytes, manufacturer);
  bytes.resize(25);
  Atom hdlr("hdlr"_4cc);
  hdlr.set_payload(std::move(bytes));
  return hdlr;
}

/// The child of an atom, which is made if it isn't there.
Atom* Child(Atom* parent, OSType type) {
  Atom* child = parent->Find(type);
  return child != nullptr ? child : &parent->Add(Atom(type));
}

/// Items of an `ilst`: each entry has a type and holds one or several `data` atoms.
template <class KeyOf>
std::vector<MetadataItem> ReadItemList(const Atom* ilst, KeyOf key_of) {
  constexpr std::size_t kFields = 8;
  std::vector<MetadataItem> items;
  if (ilst == nullptr) return items;
  ForEachAtom(ilst->payload(), [&](OSType type, std::span<const UInt8> entry) {
    ForEachAtom(entry, [&](OSType kind, std::span<const UInt8> data) {
      if (kind != kDataAtom || data.size() < kFields || items.size() > kMostMetadataItems) return;
      items.push_back({key_of(type), Bytes(data.subspan(kFields)), ReadU32(data.data()) & 0xFFFFFF,
                       ReadU32(data.data() + 4)});
    });
  });
  return items;
}

void AppendDataAtom(const MetadataItem& item, std::vector<UInt8>* bytes) {
  std::vector<UInt8> data;
  AppendU32(&data, item.data_type);
  AppendU32(&data, item.locale);
  data.insert(data.end(), item.value.begin(), item.value.end());
  AppendAtom("data"_4cc, data, bytes);
}

/// `meta` with a table of keys and a list of items whose types are places in it.
class QuickTimeFormat final : public MetadataFormat {
 public:
  OSType storage_format() const override { return kQTMetaDataStorageFormatQuickTime; }
  OSType key_format() const override { return kQTMetaDataKeyFormatQuickTime; }

  std::vector<MetadataItem> Read(const Atom& owner) const override {
    const Atom* meta = owner.Find("meta"_4cc);
    if (meta == nullptr || HandlerOf(*meta) != "mdta"_4cc) return {};
    const std::vector<std::vector<UInt8>> keys = ReadKeys(meta->Find("keys"_4cc));
    return ReadItemList(meta->Find("ilst"_4cc), [&keys](OSType place) {
      return place >= 1 && place <= keys.size() ? keys[place - 1] : std::vector<UInt8>();
    });
  }

  OSStatus Write(Atom* owner, const std::vector<MetadataItem>& items) const override {
    std::map<std::vector<UInt8>, UInt32> places;
    std::vector<UInt8> keys(4);
    AppendU32(&keys, 0);
    std::vector<UInt8> list;
    for (const MetadataItem& item : items) {
      const auto [place, is_new] = places.emplace(item.key, static_cast<UInt32>(places.size() + 1));
      if (is_new) AppendAtom("mdta"_4cc, item.key, &keys);
      std::vector<UInt8> entry;
      AppendDataAtom(item, &entry);
      AppendAtom(place->second, entry, &list);
    }
    WriteU32(keys.data() + 4, static_cast<UInt32>(places.size()));
    Atom* meta = owner->Find("meta"_4cc);
    if (meta != nullptr && HandlerOf(*meta) != "mdta"_4cc) return paramErr;  // another's
    if (meta == nullptr) {
      meta = &owner->Add(Atom("meta"_4cc));
      meta->Add(MakeHandler("mdta"_4cc, 0));
    }
    Child(meta, "keys"_4cc)->set_payload(std::move(keys));
    Child(meta, "ilst"_4cc)->set_payload(std::move(list));
    return noErr;
  }

 private:
  static std::vector<std::vector<UInt8>> ReadKeys(const Atom* table) {
    std::vector<std::vector<UInt8>> keys;
    if (table == nullptr || table->payload().size() < kHeader) return keys;
    ForEachAtom(table->payload().subspan(kHeader),
                [&](OSType, std::span<const UInt8> key) { keys.push_back(Bytes(key)); });
    return keys;
  }
};

/// `meta` in the user data, whose items have types of four characters.
class MusicFormat final : public MetadataFormat {
 public:
  OSType storage_format() const override { return kQTMetaDataStorageFormatiTunes; }
  OSType key_format() const override { return kQTMetaDataKeyFormatiTunesShortForm; }

  std::vector<MetadataItem> Read(const Atom& owner) const override {
    const Atom* meta = owner.FindPath({"udta"_4cc, "meta"_4cc});
    if (meta == nullptr || HandlerOf(*meta) != "mdir"_4cc) return {};
    return ReadItemList(meta->Find("ilst"_4cc), CodeBytes);
  }

  OSStatus Write(Atom* owner, const std::vector<MetadataItem>& items) const override {
    std::vector<UInt8> list;
    for (const MetadataItem& item : items) {
      if (item.key.size() != sizeof(OSType)) return kQTMetaDataInvalidKeyErr;
      std::vector<UInt8> entry;
      AppendDataAtom(item, &entry);
      AppendAtom(ReadU32(item.key.data()), entry, &list);
    }
    Atom* udta = Child(owner, "udta"_4cc);
    Atom* meta = udta->Find("meta"_4cc);
    if (meta != nullptr && HandlerOf(*meta) != "mdir"_4cc) return paramErr;
    if (meta == nullptr) {
      meta = &udta->Add(Atom("meta"_4cc));
      meta->set_payload(std::vector<UInt8>(4));
      meta->Add(MakeHandler("mdir"_4cc, "appl"_4cc));
    }
    Child(meta, "ilst"_4cc)->set_payload(std::move(list));
    return noErr;
  }
};

/// Items of the user data. Those whose types begin with a copyright sign are texts with a language,
/// of which there may be several in one atom; they are written one to an atom.
class UserDataFormat final : public MetadataFormat {
 public:
  OSType storage_format() const override { return kQTMetaDataStorageFormatUserData; }
  OSType key_format() const override { return kQTMetaDataKeyFormatUserData; }

  std::vector<MetadataItem> Read(const Atom& owner) const override {
    std::vector<MetadataItem> items;
    const Atom* udta = owner.Find("udta"_4cc);
    if (udta == nullptr) return items;
    for (const Atom& child : udta->children()) {
      if (child.type() == "meta"_4cc || !child.children().empty()) continue;
      if (items.size() > kMostMetadataItems) break;
      if (IsText(child.type())) {
        ReadTexts(child, &items);
      } else {
        items.push_back(
            {CodeBytes(child.type()), Bytes(child.payload()), kQTMetaDataTypeBinary, 0});
      }
    }
    return items;
  }

  OSStatus Write(Atom* owner, const std::vector<MetadataItem>& items) const override {
    constexpr std::size_t kMostText = 0xFFFF;
    constexpr UInt32 kUndetermined = 0x55C4;  // "und", which tells of UTF-8
    std::vector<Atom> atoms;
    for (const MetadataItem& item : items) {
      if (item.key.size() != sizeof(OSType)) return kQTMetaDataInvalidKeyErr;
      const OSType type = ReadU32(item.key.data());
      std::vector<UInt8> bytes;
      if (IsText(type)) {
        if (item.value.size() > kMostText) return paramErr;
        const bool is_plain = item.locale == 0 && item.data_type == kQTMetaDataTypeUTF8;
        const UInt32 language = is_plain ? kUndetermined : item.locale & 0xFFFF;
        AppendU32(&bytes, (static_cast<UInt32>(item.value.size()) << 16) | language);
      }
      bytes.insert(bytes.end(), item.value.begin(), item.value.end());
      atoms.emplace_back(type).set_payload(std::move(bytes));
    }
    Atom* udta = Child(owner, "udta"_4cc);
    if (!udta->payload().empty()) return paramErr;  // it does not hold together
    std::erase_if(udta->children(), [](const Atom& child) {
      return child.type() != "meta"_4cc && child.children().empty();
    });
    for (Atom& atom : atoms)
      udta->Add(std::move(atom));
    return noErr;
  }

 private:
  static bool IsText(OSType type) { return type >> 24 == 0xA9; }

  static void ReadTexts(const Atom& atom, std::vector<MetadataItem>* items) {
    constexpr UInt32 kFirstPackedLanguage = 0x400;  // below are those of the classic system
    std::span<const UInt8> bytes = atom.payload();
    while (bytes.size() >= 4 && items->size() <= kMostMetadataItems) {
      const std::size_t size = std::min<std::size_t>(ReadU16(bytes.data()), bytes.size() - 4);
      const UInt32 language = ReadU16(bytes.data() + 2);
      const UInt32 type =
          language < kFirstPackedLanguage ? kQTMetaDataTypeMacEncodedText : kQTMetaDataTypeUTF8;
      items->push_back({CodeBytes(atom.type()), Bytes(bytes.subspan(4, size)), type, language});
      bytes = bytes.subspan(4 + size);
    }
  }
};

}  // namespace

const std::vector<std::unique_ptr<MetadataFormat>>& MetadataFormats() {
  static const std::vector<std::unique_ptr<MetadataFormat>> formats = [] {
    std::vector<std::unique_ptr<MetadataFormat>> made;
    made.push_back(std::make_unique<QuickTimeFormat>());
    made.push_back(std::make_unique<MusicFormat>());
    made.push_back(std::make_unique<UserDataFormat>());
    return made;
  }();
  return formats;
}

}  // namespace quillmere::movies
