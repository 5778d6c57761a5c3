#include "notifications.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "object_place.h"

OSStatus FNNotify(const FSRef* folder, FNMessage message, UInt32 flags) {
  if (!folder || message != kFNDirectoryModifiedMessage || flags != 0) return paramErr;
  quillmere::files::Descriptor open_folder;
  std::filesystem::path path;
  const OSStatus status = quillmere::files::OpenFolder(*folder, &open_folder, &path);
  if (status) return status;
  struct stat present;
  if (fstat(open_folder.get(), &present) != 0) return quillmere::files::StatusOfErrno(errno);
  const timespec times[2] = {{0, UTIME_OMIT}, present.st_mtim};
  return futimens(open_folder.get(), times) == 0 ? OSStatus{noErr}
                                                 : quillmere::files::StatusOfErrno(errno);
}
