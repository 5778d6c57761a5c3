#include <algorithm>

#include "GL_File.h"
#include "GL_File_Creation.h"
#include "ORW_Debug.h"
#include "catalogue.h"
#include "creation.h"
#include "debug_thread_private.h"
#include "folders.h"

namespace {

using quillmere::Owned;

constexpr std::string_view kExtension = ".txt";
constexpr std::size_t kLongestFileName = 255;

SInt32 FileNameOf(const char* logWindowName, HFSUniStr255* name) {
  std::string text(quillmere::debug::CutText(quillmere::debug::TextOf(logWindowName),
                                             kLongestFileName - kExtension.size()));
  std::replace(text.begin(), text.end(), '/', ':');
  text += kExtension;
  const Owned<CFStringRef> string(quillmere::CreateFromUtf8(text));
  return FSGetHFSUniStrFromString(string.get(), name);
}

SInt32 FindLogFolder(FSRef* folder) {
  FSRef logs{};
  const SInt32 status = FSFindFolder(kUserDomain, kLogsFolderType, 1, &logs);
  if (status != noErr) return status;
  HFSUniStr255 name{};
  FSGetHFSUniStrFromString(CFSTR("ORW debug logs"), &name);
  return GL_CreateFolder(&logs, &name, folder);
}

void CloseLog(DbgData* data) {
  if (data->logFork > 0) FSCloseFork(data->logFork);
  data->logFork = 0;
}

}  // namespace

SInt32 DBG_CreateFile(const FSRef* folder, const HFSUniStr255* name, FSRef* file) {
  if (folder == nullptr || name == nullptr) return paramErr;
  FSCatalogInfo info{};
  constexpr UInt8 kTextOfNobody[8] = {'T', 'E', 'X', 'T', '?', '?', '?', '?'};
  std::copy(std::begin(kTextOfNobody), std::end(kTextOfNobody), info.finderInfo);
  return FSCreateFileUnicode(folder, name->length, name->unicode, kFSCatInfoFinderInfo, &info, file,
                             nullptr);
}

SInt32 DBG_OpenCreateLogfile(const char* logWindowName, DbgData* dbgData) {
  if (dbgData == nullptr) return paramErr;
  FSRef folder{};
  SInt32 status = FindLogFolder(&folder);
  HFSUniStr255 name{};
  if (status == noErr) status = FileNameOf(logWindowName, &name);
  if (status != noErr) return status;
  FSRef file{};
  status = FSMakeFSRefUnicode(&folder, name.length, name.unicode, 0, &file);
  if (status == fnfErr) {
    CloseLog(dbgData);
    status = DBG_CreateFile(&folder, &name, &file);
  }
  if (status != noErr) return status;
  // Another file may have taken the name of the one that is open.
  if (dbgData->logFork > 0 && FSCompareFSRefs(&file, &dbgData->logFile) != 0) CloseLog(dbgData);
  dbgData->logFile = file;
  if (dbgData->logFork > 0) return noErr;
  return GL_OpenDataFork(&dbgData->logFile, fsWrPerm, &dbgData->logFork);
}
