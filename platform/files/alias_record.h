/// The record of an alias: the classic form, version 2.
///
/// The record holds a fixed part with volume, parent and file names and numbers, then tagged items,
/// among them the Unicode name (14), the volume's (15), the dates of creation of volume and file in
/// full (16, 17), and the POSIX path relative to the volume (18) with the volume's mount point
/// (19). All numbers are big-endian. Records of other systems are read the same way.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "base_types.h"
#include "file_dates.h"

namespace quillmere::files {

/// What an alias record says of its target, each part empty if the record does not hold it. Text is
/// UTF-8.
struct AliasContent {
  std::filesystem::path absolute_path;  ///< mount point and POSIX path
  std::filesystem::path
      relative_path;  ///< from the folder of the file that holds the alias to the target
  std::string file_name;
  std::string volume_name;
  std::filesystem::path mount_point;
  bool is_folder = false;
  UInt32 parent_number = 0;  ///< low 32 bits of the inode of the target's folder
  UInt32 file_number = 0;    ///< and of the target
  UTCDateTime volume_created{};
  UTCDateTime file_created{};
  OSType type = 0;
  OSType creator = 0;
  UInt16 signature = 0;
  UInt16 filesystem_id = 0;
};
/// Reads an alias record from bytes that nobody vouches for; false if it is damaged.
bool ReadAlias(std::span<const UInt8> record, AliasContent* content);
/// The record of a file, which need not exist, by its absolute path. `from` is the file that holds
/// the alias, empty for none; from its folder the relative path leads. Empty if the record would be
/// too long.
std::vector<UInt8> MakeAliasRecord(const std::filesystem::path& target,
                                   const std::filesystem::path& from);

}  // namespace quillmere::files
