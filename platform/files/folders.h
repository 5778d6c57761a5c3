/// The folders that every user and every system has, by domain and type.
///
/// | type   | user                                 | local            | system                    |
/// |--------|--------------------------------------|------------------|---------------------------|
/// | `asup` | `$XDG_DATA_HOME`                     | /usr/local/share | /usr/share                |
/// | `fram` |                                      | /usr/local/lib   | /usr/lib                  |
/// | `logs` | `$XDG_STATE_HOME/quillmere/logs`     |                  |                           |
/// | `macs` |                                      |                  | /                         |
/// | `mdoc` | the folder for videos                |                  |                           |
/// | `pref` | `$XDG_CONFIG_HOME`                   | /etc/xdg         | /etc/xdg                  |
/// | `ssnd` |                                      |                  | freedesktop's sound theme |
/// | `trsh` | the trash of the home                |                  |                           |
/// | `utmp` | `$TMPDIR`, or else /tmp              |                  |                           |
///
/// Variables that are not set have their values of the XDG base directory specification. The folder
/// for videos comes from user-dirs.dirs, `~/Videos` where that names none. On a volume a trash is
/// looked for as in the trash specification of freedesktop.org: that of the home on its volume, on
/// others `.Trash/$uid` if an administrator made `.Trash` safely, else `.Trash-$uid`; what was
/// thrown away lies in the folder `files` within, which is the one given.
#pragma once

#include <string>
#include <string_view>

#include "base_types.h"
#include "file_references.h"
#include "volumes.h"

inline constexpr FSVolumeRefNum kOnSystemDisk = -32768;  ///< the same as kSystemDomain
inline constexpr FSVolumeRefNum kSystemDomain = -32766;
inline constexpr FSVolumeRefNum kLocalDomain = -32765;
inline constexpr FSVolumeRefNum kUserDomain = -32763;
inline constexpr FSVolumeRefNum kClassicDomain = -32762;  ///< known, and has no folders

inline constexpr OSType kApplicationSupportFolderType = "asup"_4cc;
inline constexpr OSType kFrameworksFolderType = "fram"_4cc;
inline constexpr OSType kLogsFolderType = "logs"_4cc;
inline constexpr OSType kSystemFolderType = "macs"_4cc;
inline constexpr OSType kMovieDocumentsFolderType = "mdoc"_4cc;
inline constexpr OSType kPreferencesFolderType = "pref"_4cc;
inline constexpr OSType kSystemSoundsFolderType = "ssnd"_4cc;
inline constexpr OSType kTrashFolderType = "trsh"_4cc;
inline constexpr OSType kTemporaryFolderType = "utmp"_4cc;

/// Finds a well-known folder, making it and what it lies in if `create` is set. `volume` is one of
/// the domains above, or the number of a volume, which has a trash alone. Folders of the system and
/// of all its users are never made. fnfErr for one that is not there, that the domain does not
/// have, or if the user has no home; nsvErr for no volume, paramErr for a type that is not known.
OSErr FSFindFolder(FSVolumeRefNum volume, OSType type, Boolean create, FSRef* folder);

namespace quillmere::files {

/// The folder that a user-dirs.dirs file gives for `key` ("XDG_VIDEOS_DIR"), `home` taking the
/// place of `$HOME`; empty if it gives none. A later line counts more than an earlier one.
std::string UserFolderIn(std::string_view text, std::string_view key, std::string_view home);

}  // namespace quillmere::files
