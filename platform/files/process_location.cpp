#include "process_location.h"

#include <filesystem>
#include <system_error>

OSStatus GetProcessBundleLocation(const ProcessSerialNumber* process, FSRef* location) {
  if (!process || !location) return paramErr;
  if (process->highLongOfPSN != 0 || process->lowLongOfPSN != kCurrentProcess) return procNotFound;
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? quillmere::files::StatusOfErrno(error.value())
               : quillmere::files::ReferenceOf(program, location);
}
