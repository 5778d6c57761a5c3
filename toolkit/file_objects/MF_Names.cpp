#include <cstring>

#include "GL_Strings_Unicode.h"
#include "MF_FileObjects.h"
#include "MF_trace_private.h"
#include "file_numbers.h"

using quillmere::Owned;
using quillmere::file_objects::Checked;
using quillmere::file_objects::kCatalogFailed;
using quillmere::file_objects::Trace;

namespace {

constexpr CFIndex kLongestName = 31;
constexpr CFIndex kLongestVolumeName = 27;

TextEncoding KnownEncoding(TextEncoding encoding) {
  if (encoding == kTextEncodingUnknown) GL_GetSystemTextEncoding(&encoding);
  return encoding;
}

}  // namespace

SInt32 MF_FSRefMakeFSSpec(const FSRef* reference, FSSpec* spec) {
  const Trace trace("MF_FSRefMakeFSSpec");
  if (!spec) return paramErr;
  return Checked(FSGetCatalogInfo(reference, kFSCatInfoNone, nullptr, nullptr, spec, nullptr),
                 kCatalogFailed);
}

SInt32 MF_FSMakeFSRef(FSVolumeRefNum volume, UInt64 directory, const UInt8* name,
                      FSRef* reference) {
  const Trace trace("MF_FSMakeFSRef");
  return Checked(PBMakeFSRefSync(volume, directory, name, reference), "PBMakeFSRefSync failed");
}

SInt32 MF_FSMakePath(const FSSpec* spec, UInt8* path, UInt32 capacity) {
  const Trace trace("MF_FSMakePath");
  if (!spec || !path) return paramErr;
  FSRef reference;
  const SInt32 status = Checked(FSpMakeFSRef(spec, &reference), "FSpMakeFSRef failed");
  return status ? status
                : Checked(FSRefMakePath(&reference, path, capacity), "FSRefMakePath failed");
}

SInt32 MF_FSPathMakeFSSpec(const UInt8* path, FSSpec* spec, Boolean* is_directory) {
  const Trace trace("MF_FSPathMakeFSSpec");
  FSRef reference;
  const SInt32 status =
      Checked(FSPathMakeRef(path, &reference, is_directory), "FSPathMakeRef failed");
  return status ? status : MF_FSRefMakeFSSpec(&reference, spec);
}

SInt32 MF_FSCreateFileIDRef(const FSRef* file, UInt64* file_id) {
  const Trace trace("MF_FSCreateFileIDRef");
  const SInt32 status = PBCreateFileIDRefSync(file, file_id);
  if (status == fidExists || status == afpIDExists) return noErr;
  return Checked(status, "PBCreateFileIDRefSync failed");
}

SInt32 MF_FSResolveFileIDRef(FSVolumeRefNum volume, UInt64 file_id, FSRef* reference) {
  const Trace trace("MF_FSResolveFileIDRef");
  return Checked(PBResolveFileIDRefSync(volume, file_id, reference),
                 "PBResolveFileIDRefSync failed");
}

SInt32 MF_UnicodeNameGetHFSName(UInt32 length, const UniChar* name, TextEncoding encoding,
                                Boolean is_volume_name, UInt8* out) {
  const Trace trace("MF_UnicodeNameGetHFSName");
  if (!out || (!name && length > 0)) return paramErr;
  out[0] = 0;
  if (length == 0) return noErr;
  const Owned<CFStringRef> string(CFStringCreateWithCharacters(kCFAllocatorDefault, name, length));
  CFIndex used = 0;
  CFStringGetBytes(string.get(), {0, length}, KnownEncoding(encoding), '?', 0, out + 1,
                   is_volume_name ? kLongestVolumeName : kLongestName, &used);
  out[0] = static_cast<UInt8>(used);
  return Checked(used > 0 ? noErr : kTECNoConversionPathErr, "conversion from Unicode failed");
}

SInt32 MF_HFSNameGetUnicodeName(const UInt8* hfs_name, TextEncoding encoding, HFSUniStr255* out) {
  const Trace trace("MF_HFSNameGetUnicodeName");
  if (!hfs_name || !out) return paramErr;
  out->length = 0;
  if (hfs_name[0] == 0) return noErr;
  const Owned<CFStringRef> string(CFStringCreateWithBytes(kCFAllocatorDefault, hfs_name + 1,
                                                          hfs_name[0], KnownEncoding(encoding), 0));
  return Checked(string ? FSGetHFSUniStrFromString(string.get(), out) : kTextMalformedInputErr,
                 "conversion to Unicode failed");
}
