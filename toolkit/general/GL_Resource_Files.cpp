#include "GL_Resource_Files.h"

#include "MF_FileObjects.h"
#include "creation.h"
#include "file_creation_private.h"
#include "forks.h"
#include "resources.h"

SInt32 GL_CreateResFile(const FSRef* folder, const HFSUniStr255* name, OSType creator, OSType type,
                        FSRef* file) {
  if (!folder || !name || !file) return paramErr;
  const FSCatalogInfo info = quillmere::general::InfoOfNewFile(creator, type);
  FSCreateResFile(folder, name->length, name->unicode, kFSCatInfoFinderInfo, &info, file, nullptr);
  const SInt32 status = ResError();
  return status ? status : MF_FSBumpDate(folder);
}

SInt32 GL_DeleteEmptyResourceFile(SInt16 resource_file, FSRef* file) {
  if (!file || !MF_FSRefValid(file)) return noErr;
  const ResFileRefNum old_file = CurResFile();
  if (resource_file == 0) {
    resource_file = FSOpenResFile(file, fsRdWrPerm);
    if (resource_file < 0) return ResError();
  } else {
    UseResFile(resource_file);
  }
  SInt32 status = ResError();
  const SInt16 type_count = status ? SInt16{0} : Count1Types();
  if (!status) status = ResError();
  CloseResFile(resource_file);
  if (old_file != resource_file) UseResFile(old_file);
  if (status || type_count > 0) return status;
  status = FSDeleteObject(file);
  if (!status) *file = {};
  return status;
}
