#include "atom.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "big_endian.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

namespace {

constexpr UInt64 kHeader32 = 8;
constexpr UInt64 kHeader64 = 16;
constexpr UInt64 kMaximum32 = std::numeric_limits<UInt32>::max();
/// Any parent, or none.
constexpr OSType kAnywhere = 0;

/// A container that is looked into: which parents it stands in, and the bytes of fields before its
/// children. A type of the same letters in another place is somebody's own data and stays a leaf.
struct ContainerRule {
  OSType type;
  OSType parent;
  UInt64 fields;
};
constexpr ContainerRule kContainers[] = {
    {"moov"_4cc, kAnywhere, 0},  {"cmov"_4cc, "moov"_4cc, 0}, {"trak"_4cc, "moov"_4cc, 0},
    {"mvex"_4cc, "moov"_4cc, 0}, {"clip"_4cc, "moov"_4cc, 0}, {"clip"_4cc, "trak"_4cc, 0},
    {"matt"_4cc, "trak"_4cc, 0}, {"edts"_4cc, "trak"_4cc, 0}, {"tref"_4cc, "trak"_4cc, 0},
    {"tapt"_4cc, "trak"_4cc, 0}, {"mdia"_4cc, "trak"_4cc, 0}, {"minf"_4cc, "mdia"_4cc, 0},
    {"gmhd"_4cc, "minf"_4cc, 0}, {"dinf"_4cc, "minf"_4cc, 0}, {"stbl"_4cc, "minf"_4cc, 0},
    {"meta"_4cc, "mdia"_4cc, 0}, {"dinf"_4cc, "meta"_4cc, 0}, {"dref"_4cc, "dinf"_4cc, 8},
    {"stsd"_4cc, "stbl"_4cc, 8}, {"moof"_4cc, kAnywhere, 0},  {"traf"_4cc, "moof"_4cc, 0},
    {"mfra"_4cc, kAnywhere, 0},  {"udta"_4cc, "moov"_4cc, 0}, {"udta"_4cc, "trak"_4cc, 0},
    {"udta"_4cc, "mdia"_4cc, 0}, {"udta"_4cc, kAnywhere, 0},  {"meta"_4cc, "moov"_4cc, 0},
    {"meta"_4cc, "trak"_4cc, 0}, {"meta"_4cc, "udta"_4cc, 0}, {"meta"_4cc, kAnywhere, 0},
};

/// `meta` is a full atom in ISO files and a plain container in QuickTime files: what stands where
/// its handler has to be tells which.
UInt64 FieldsOfMeta(std::span<const UInt8> content) {
  const auto handler_at = [&](std::size_t offset) {
    return content.size() >= offset + 4 && ReadU32(content.data() + offset) == "hdlr"_4cc;
  };
  if (handler_at(4)) return 0;
  if (handler_at(8)) return 4;
  return content.size() >= 4 && ReadU32(content.data()) == 0 ? 4 : 0;
}

const ContainerRule* FindRule(OSType type, OSType parent, bool is_root) {
  for (const ContainerRule& rule : kContainers) {
    if (rule.type == type && (rule.parent == kAnywhere ? is_root : rule.parent == parent)) {
      return &rule;
    }
  }
  return nullptr;
}

bool IsZero(std::span<const UInt8> bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](UInt8 byte) { return byte == 0; });
}

}  // namespace

/// Builds a tree over one block.
class AtomParser {
 public:
  explicit AtomParser(std::shared_ptr<const std::vector<UInt8>> block) : block_(std::move(block)) {}

  /// Reads the header at the start of `bytes`; the size has to lie within them.
  static bool ReadHeader(std::span<const UInt8> bytes, Atom* atom, UInt64* header, UInt64* size) {
    if (bytes.size() < kHeader32) return false;
    *header = kHeader32;
    *size = ReadU32(bytes.data());
    atom->type_ = ReadU32(bytes.data() + 4);
    if (*size == 0) {
      atom->size_form_ = SizeForm::kToEnd;
      *size = bytes.size();
    } else if (*size == 1) {
      if (bytes.size() < kHeader64) return false;
      atom->size_form_ = SizeForm::k64;
      *header = kHeader64;
      *size = ReadU64(bytes.data() + 8);
    }
    return *size >= *header && *size <= bytes.size();
  }

  /// Fills `atom` from its content.
  void ParseContent(std::span<const UInt8> content, OSType parent, int depth, Atom* atom) {
    atom->source_ = block_;
    atom->read_payload_ = content;
    const ContainerRule* rule = FindRule(atom->type_, parent, depth == 0);
    if (rule == nullptr || depth + 1 >= kMaximumAtomDepth) return;
    const UInt64 fields = atom->type_ == "meta"_4cc ? FieldsOfMeta(content) : rule->fields;
    if (content.size() < fields) return;
    const std::size_t atoms_before = atoms_;
    if (ParseChildren(content.subspan(fields), depth + 1, atom)) {
      atom->read_payload_ = content.first(fields);
    } else {
      atoms_ = atoms_before;
      atom->children_.clear();
      atom->children_.shrink_to_fit();
      atom->read_tail_ = {};
    }
  }

 private:
  bool ParseChildren(std::span<const UInt8> bytes, int depth, Atom* parent) {
    while (!bytes.empty()) {
      // Fewer bytes than a header, or zeros: the end mark of a `udta`, or padding.
      if (bytes.size() < kHeader32 || (ReadU64(bytes.data()) == 0 && IsZero(bytes))) {
        parent->read_tail_ = bytes;
        return true;
      }
      if (++atoms_ > kMaximumAtomCount) return false;
      Atom child(0);
      UInt64 header = 0;
      UInt64 size = 0;
      if (!ReadHeader(bytes, &child, &header, &size)) return false;
      ParseContent(bytes.subspan(header, size - header), parent->type_, depth, &child);
      parent->children_.push_back(std::move(child));
      bytes = bytes.subspan(size);
    }
    return true;
  }

  std::shared_ptr<const std::vector<UInt8>> block_;
  std::size_t atoms_ = 0;
};

std::span<const UInt8> Atom::payload() const {
  return own_payload_ ? std::span<const UInt8>(*own_payload_) : read_payload_;
}

std::span<UInt8> Atom::mutable_payload() {
  if (!own_payload_ || own_payload_.use_count() > 1) {
    const std::span<const UInt8> bytes = payload();
    set_payload({bytes.begin(), bytes.end()});
  }
  return *own_payload_;
}

void Atom::set_payload(std::vector<UInt8> bytes) {
  own_payload_ = std::make_shared<std::vector<UInt8>>(std::move(bytes));
}

SharedBytes Atom::SharePayload() const {
  if (own_payload_) return {own_payload_, *own_payload_};
  return {source_, read_payload_};
}

const Atom* Atom::Find(OSType type) const {
  for (const Atom& child : children_) {
    if (child.type_ == type) return &child;
  }
  return nullptr;
}

Atom* Atom::Find(OSType type) {
  return const_cast<Atom*>(std::as_const(*this).Find(type));
}

const Atom* Atom::FindPath(std::initializer_list<OSType> path) const {
  const Atom* atom = this;
  for (const OSType type : path) {
    atom = atom->Find(type);
    if (atom == nullptr) return nullptr;
  }
  return atom;
}

Atom* Atom::FindPath(std::initializer_list<OSType> path) {
  return const_cast<Atom*>(std::as_const(*this).FindPath(path));
}

Atom& Atom::Add(Atom child) {
  children_.push_back(std::move(child));
  return children_.back();
}

Atom& Atom::Insert(std::size_t position, Atom child) {
  const auto place = children_.begin() + static_cast<std::ptrdiff_t>(position);
  return *children_.insert(place, std::move(child));
}

std::size_t Atom::Remove(OSType type) {
  return std::erase_if(children_, [type](const Atom& child) { return child.type_ == type; });
}

UInt64 Atom::ContentSize() const {
  UInt64 size = payload().size() + read_tail_.size();
  for (const Atom& child : children_)
    size += child.Size();
  return size;
}

UInt64 Atom::Size() const {
  const UInt64 content = ContentSize();
  const bool wide = size_form_ == SizeForm::k64 || content > kMaximum32 - kHeader32;
  return content + (wide && size_form_ != SizeForm::kToEnd ? kHeader64 : kHeader32);
}

void Atom::WriteWith(SizeForm form, const ByteSink& sink) const {
  const UInt64 content = ContentSize();
  std::vector<UInt8> header = MakeAtomHeader(type_, content);
  if (form == SizeForm::kToEnd) {
    header.resize(kHeader32);
    WriteU32(header.data(), 0);
  } else if (form == SizeForm::k64 && header.size() == kHeader32) {
    WriteU32(header.data(), 1);
    AppendU64(&header, content + kHeader64);
  }
  sink(header);
  sink(payload());
  for (const Atom& child : children_) {
    const bool ends_this = &child == &children_.back() && read_tail_.empty();
    const bool resolve = child.size_form_ == SizeForm::kToEnd && !ends_this;
    child.WriteWith(resolve ? SizeForm::k32 : child.size_form_, sink);
  }
  sink(read_tail_);
}

void Atom::Write(std::vector<UInt8>* out) const {
  out->reserve(out->size() + Size());
  Write(
      [out](std::span<const UInt8> bytes) { out->insert(out->end(), bytes.begin(), bytes.end()); });
}

void Atom::Write(const ByteSink& sink) const {
  WriteWith(size_form_, sink);
}

std::vector<UInt8> MakeAtomHeader(OSType type, UInt64 content_size) {
  const bool wide = content_size > kMaximum32 - kHeader32;
  std::vector<UInt8> bytes;
  AppendU32(&bytes, wide ? 1 : static_cast<UInt32>(content_size + kHeader32));
  AppendU32(&bytes, type);
  if (wide) AppendU64(&bytes, content_size + kHeader64);
  return bytes;
}

OSStatus ParseAtom(std::shared_ptr<const std::vector<UInt8>> block, std::unique_ptr<Atom>* atom) {
  atom->reset();
  if (block == nullptr) return badPublicMovieAtom;
  const std::span<const UInt8> bytes = *block;
  auto root = std::make_unique<Atom>(OSType{0});
  UInt64 header = 0;
  UInt64 size = 0;
  if (!AtomParser::ReadHeader(bytes, root.get(), &header, &size) || size != bytes.size()) {
    return badPublicMovieAtom;
  }
  AtomParser(std::move(block)).ParseContent(bytes.subspan(header), 0, 0, root.get());
  *atom = std::move(root);
  return noErr;
}

}  // namespace quillmere::movies
