/// The atom tree: the model of everything that stands in a movie file outside its media data.
///
/// A tree keeps every byte it was read from. Containers that are understood hold children; every
/// other atom is a leaf whose payload is kept verbatim. Writing an unchanged tree gives the bytes
/// that were read. Typed views (movie_records.h) decode and patch fields inside payloads, so that a
/// change touches only the bytes it is about.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <vector>

#include "base_types.h"

namespace quillmere::movies {

/// A part of a block of bytes together with what keeps the block alive.
struct SharedBytes {
  std::shared_ptr<const std::vector<UInt8>> owner;
  std::span<const UInt8> bytes;
};

/// Takes bytes, piece by piece.
using ByteSink = std::function<void(std::span<const UInt8>)>;

/// How an atom's size was written; kept so that it is written the same way again.
enum class SizeForm : UInt8 {
  k32,    ///< 32-bit size, 8 bytes of header
  k64,    ///< size 1 and a 64-bit size, 16 bytes of header
  kToEnd  ///< size 0: the atom reaches to the end of what encloses it
};

class Atom {
 public:
  explicit Atom(OSType type) : type_(type) {}

  OSType type() const { return type_; }
  void set_type(OSType type) { type_ = type; }
  SizeForm size_form() const { return size_form_; }
  void set_size_form(SizeForm form) { size_form_ = form; }

  /// Bytes behind the header and before the first child: all of a leaf's content; in a container
  /// the fields that stand before its children (version, flags and entry count of `stsd` and
  /// `dref`).
  std::span<const UInt8> payload() const;
  /// The same bytes for patching; copied out of the block they were read from, or that they share
  /// with a copy of the atom, at the first call.
  std::span<UInt8> mutable_payload();
  void set_payload(std::vector<UInt8> bytes);
  /// The same bytes to be kept beyond the atom's own life, not copied. A later change of the atom
  /// does not change them.
  SharedBytes SharePayload() const;

  const std::vector<Atom>& children() const { return children_; }
  std::vector<Atom>& children() { return children_; }
  /// Bytes behind the last child, such as the four zero bytes that end some `udta` atoms.
  std::span<const UInt8> tail() const { return read_tail_; }

  /// The first child of that type, or null. The `path` form goes down a step per type.
  const Atom* Find(OSType type) const;
  Atom* Find(OSType type);
  const Atom* FindPath(std::initializer_list<OSType> path) const;
  Atom* FindPath(std::initializer_list<OSType> path);
  /// Appends a child. A sibling before it that reached "to the end" gets a size of its own.
  Atom& Add(Atom child);
  /// Puts a child at a position among the children, from 0.
  Atom& Insert(std::size_t position, Atom child);
  /// Takes out all children of that type; how many there were.
  std::size_t Remove(OSType type);

  /// The bytes that writing the atom takes, header included.
  UInt64 Size() const;
  /// Appends the atom, header included, to `out`. An atom that outgrows a 32-bit size gets a 64-bit
  /// one; size 0 is written only where the atom does end what encloses it.
  void Write(std::vector<UInt8>* out) const;
  /// The same, without one block for all of it.
  void Write(const ByteSink& sink) const;

 private:
  friend class AtomParser;
  UInt64 ContentSize() const;
  void WriteWith(SizeForm form, const ByteSink& sink) const;

  OSType type_;
  SizeForm size_form_ = SizeForm::k32;
  /// The block that the spans below lie in when they were read and not replaced.
  std::shared_ptr<const std::vector<UInt8>> source_;
  std::span<const UInt8> read_payload_;
  std::span<const UInt8> read_tail_;
  /// The payload when it was replaced; copies of the atom share it until one of them changes it.
  std::shared_ptr<std::vector<UInt8>> own_payload_;
  std::vector<Atom> children_;
};

/// The header of an atom with so many bytes of content: 8 bytes, or 16 where the size needs them.
std::vector<UInt8> MakeAtomHeader(OSType type, UInt64 content_size);

/// The nesting depth that is followed, and the number of atoms that one tree may have. What lies
/// deeper or comes later stays inside its parent as bytes.
inline constexpr int kMaximumAtomDepth = 32;
inline constexpr std::size_t kMaximumAtomCount = std::size_t{1} << 20;

/// Parses the atom that `block` consists of (header first). Sizes are checked against what encloses
/// them. What does not parse as children makes its container a leaf, so that its bytes are kept.
/// Status 0 on success; badPublicMovieAtom when the block is not exactly one atom.
OSStatus ParseAtom(std::shared_ptr<const std::vector<UInt8>> block, std::unique_ptr<Atom>* atom);

}  // namespace quillmere::movies
