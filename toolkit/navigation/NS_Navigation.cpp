#include "NS_Navigation.h"

#include "GL_File.h"
#include "GL_Memory.h"
#include "GL_Strings_Unicode.h"
#include "MF_FileObjects.h"
#include "NS_Errors.h"
#include "reference_counted.h"

namespace {

using quillmere::AtExit;
using quillmere::Owned;

/// Opens the dialog in a folder.
SInt32 SetLocation(NavDialogRef dialog, const FSRef* folder) {
  AEDesc location{};
  if (AECreateDesc(typeFSRef, folder, sizeof *folder, &location) != noErr) return noErr;
  const OSStatus status = NavCustomControl(dialog, kNavCtlSetLocation, &location);
  AEDisposeDesc(&location);
  return status;
}

/// Runs a created dialog and takes the one item that was chosen.
SInt32 RunForSingleObject(NavDialogRef dialog, NS_CallbackRec* record, FSRef* object) {
  const OSStatus status = NavDialogRun(dialog);
  if (status != noErr) return status;
  if (record->replyStatus != noErr) return record->replyStatus;
  FSRef chosen{};
  const SInt32 taken = NS_GetSingleFileObjectFromAEDescList(&record->reply.selection, &chosen);
  NavDisposeReply(&record->reply);
  if (taken == noErr) *object = chosen;
  return taken;
}

SInt32 PrepareOptions(CFStringRef client_name, CFStringRef message,
                      NavDialogCreationOptions* options) {
  const OSStatus status = NavGetDefaultDialogCreationOptions(options);
  if (status != noErr) return status;
  options->optionFlags &= ~kNavAllowMultipleFiles;
  if (client_name != nullptr) options->clientName = client_name;
  if (message != nullptr) options->message = message;
  return noErr;
}

}  // namespace

void NS_EventProcPrototype(SInt32 selector, NavCBRec* parameters, void* callback_record) {
  auto* record = static_cast<NS_CallbackRec*>(callback_record);
  switch (selector) {
    case kNavCBStart:
      if (MF_FSRefValid(&record->startLocation)) {
        SetLocation(parameters->context, &record->startLocation);
      }
      break;
    case kNavCBTerminate:
      record->done = 1;
      break;
    case kNavCBUserAction:
      record->userAction = NavDialogGetUserAction(parameters->context);
      if (record->userAction == kNavUserActionCancel) {
        record->replyStatus = userCanceledErr;
      } else if (record->userAction >= kNavUserActionOpen &&
                 record->userAction <= kNavUserActionChoose) {
        record->replyStatus = NavDialogGetReply(parameters->context, &record->reply);
      }
      record->done = 1;
      break;
    default:
      break;
  }
}

void NS_DummyEventHandler(SInt32 /*selector*/, NavCBRec* /*parameters*/, void* /*record*/) {}

SInt32 NS_GetSingleFileFromUser(NavEventProcPtr event_procedure, NavObjectFilterProcPtr filter,
                                const void* filter_data, CFStringRef client_name,
                                CFStringRef message, FSRef* file) {
  NS_CallbackRec record{};
  record.filterData = filter_data;
  NavDialogCreationOptions options{};
  SInt32 status = PrepareOptions(client_name, message, &options);
  if (status != noErr) return status;
  options.optionFlags |= kNavSupportPackages | kNavAllowOpenPackages;
  if (event_procedure == nullptr) return NS_NoEventProcErr;
  NavDialogRef dialog = nullptr;
  status = NavCreateChooseFileDialog(&options, nullptr, event_procedure, nullptr, filter, &record,
                                     &dialog);
  if (status != noErr) return status;
  const AtExit dispose([dialog] { NavDialogDispose(dialog); });
  return RunForSingleObject(dialog, &record, file);
}

SInt32 NS_GetSingleFolderFromUser(NavEventProcPtr event_procedure, NavObjectFilterProcPtr filter,
                                  const void* filter_data, CFStringRef message, FSRef* folder) {
  NS_CallbackRec record{};
  record.filterData = filter_data;
  NavDialogCreationOptions options{};
  SInt32 status = PrepareOptions(nullptr, message, &options);
  if (status != noErr) return status;
  if (event_procedure == nullptr) return NS_NoEventProcErr;
  NavDialogRef dialog = nullptr;
  status = NavCreateChooseFolderDialog(&options, event_procedure, filter, &record, &dialog);
  if (status != noErr) return status;
  const AtExit dispose([dialog] { NavDialogDispose(dialog); });
  if (MF_FSRefValid(folder)) {
    status = SetLocation(dialog, folder);
    if (status != noErr) return status;
  }
  return RunForSingleObject(dialog, &record, folder);
}

SInt32 NS_CopyReply(const NavReplyRecord* from, NavReplyRecord* to) {
  *to = *from;
  to->selection = {typeNull, nullptr};
  to->fileTranslation = nullptr;
  to->saveFileName = nullptr;
  if (from->fileTranslation != nullptr) {
    const SInt32 status = GL_CopyHandle(from->fileTranslation, &to->fileTranslation);
    if (status != noErr) return status;
  }
  if (from->saveFileName != nullptr) {
    to->saveFileName = CFStringCreateCopy(kCFAllocatorDefault, from->saveFileName);
  }
  return AEDuplicateDesc(&from->selection, &to->selection);
}

SInt32 NS_GetSingleFileObjectFromAEDescList(const AEDescList* list, FSRef* reference) {
  SInt32 count = 0;
  SInt32 status = AECountItems(list, &count);
  if (status == noErr && count > 0) return NS_GetNthFileObjectFromAEDescList(list, 1, reference);
  *reference = {};
  return status;
}

SInt32 NS_GetNthFileObjectFromAEDescList(const AEDescList* list, SInt32 index, FSRef* reference) {
  const OSErr status =
      AEGetNthPtr(list, index, typeFSRef, nullptr, nullptr, reference, sizeof *reference, nullptr);
  if (status != noErr) *reference = {};
  return status;
}

SInt32 NS_GetFileObjectFromAEDesc(const AEDesc* descriptor, FSRef* reference) {
  AEDesc coerced{};
  OSErr status = AECoerceDesc(descriptor, typeFSRef, &coerced);
  if (status != noErr) return status;
  status = AEGetDescData(&coerced, reference, sizeof *reference);
  AEDisposeDesc(&coerced);
  return status;
}

Boolean NS_FileExtensionFilter(AEDesc* item, void* info, void* callback_record, SInt16 /*mode*/) {
  constexpr OSType kTypeFileSpecification = "fss "_4cc;
  if (item->descriptorType != kTypeFileSpecification && item->descriptorType != typeFSRef &&
      item->descriptorType != typeFileURL) {
    return 0;
  }
  const auto* extension =
      static_cast<CFStringRef>(static_cast<const NS_CallbackRec*>(callback_record)->filterData);
  if (extension == nullptr || CFStringGetLength(extension) == 0) return 0;
  if (static_cast<const NavFileOrFolderInfo*>(info)->isFolder) return 1;
  FSRef file{};
  Owned<CFStringRef> name;
  if (NS_GetFileObjectFromAEDesc(item, &file) != noErr ||
      GL_CopyFileDirNameAsCFString(&file, name.out()) != noErr) {
    return 0;
  }
  constexpr UInt32 kStopAtFullStop = 1;
  SInt32 length = 0;
  const Owned<CFStringRef> end(GL_CopyCFNameEndString(
      name.get(), &length, static_cast<SInt32>(CFStringGetLength(extension)), kStopAtFullStop));
  return GL_EqualCFStr(end.get(), extension);
}
