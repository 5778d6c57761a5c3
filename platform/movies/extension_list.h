/// The extension atoms behind the record of an image description.
#pragma once

#include <span>
#include <vector>

#include "base_types.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// paramErr for null, badImageDescription for a handle that is shorter than the record.
OSErr CheckDescription(ImageDescriptionHandle description);

struct ExtensionAt {
  OSType type;
  std::size_t offset;  ///< of its header among the bytes
  std::size_t size;    ///< with the header
};

/// A copy of a description that is taken apart, changed and written back.
class ExtensionList {
 public:
  OSErr Read(ImageDescriptionHandle description);
  /// The extensions that lie within the description, in their order.
  const std::vector<ExtensionAt>& all() const { return all_; }
  /// The one at `index`, from 1, among those of a type; null if there is none.
  const ExtensionAt* Find(OSType type, SInt32 index) const;
  std::span<const UInt8> ContentOf(const ExtensionAt& extension) const;
  void Add(OSType type, std::span<const UInt8> content);
  /// `extension` is one of `all`, which change with this.
  void Remove(const ExtensionAt& extension);
  /// Gives the handle the bytes, their number in the size field.
  OSErr WriteTo(ImageDescriptionHandle description);

 private:
  void FindAll();

  std::vector<UInt8> bytes_;
  std::vector<ExtensionAt> all_;
};

}  // namespace quillmere::movies
