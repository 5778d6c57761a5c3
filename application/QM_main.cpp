#include "QM_main.h"

#include <cinttypes>
#include <cstdio>
#include <memory>

#include "GL_CF.h"
#include "GL_Controls.h"
#include "GL_Errors.h"
#include "GL_File.h"
#include "GL_Process.h"
#include "GL_Quartz.h"
#include "GL_Windows.h"
#include "LL_Linked_Lists.h"
#include "MF_FileObjects.h"
#include "NS_Navigation.h"
#include "ORW_Debug.h"
#include "QM_job.h"
#include "QT_Movie_File.h"
#include "images.h"
#include "movie_toolbox.h"
#include "nibs.h"
#include "reference_counted.h"
#include "views.h"
#include "window_manager.h"

namespace {

using quillmere::Owned;

constexpr const char kIconName[] = "Quillmere2-48 real size.png";

/// An image source that expects a PNG; null if there is none to be made.
CGImageSourceRef CreatePngSource(CFURLRef url) {
  if (url == nullptr) return nullptr;
  const Owned<CFMutableDictionaryRef> options(CFDictionaryCreateMutable(kCFAllocatorDefault));
  CFDictionarySetValue(options.get(), kCGImageSourceTypeIdentifierHint, kUTTypePNG);
  return CGImageSourceCreateWithURL(url, options.get());
}

SInt32 InstallDrawHandler(WindowRef window, SInt32 number) {
  HIViewRef control = nullptr;
  OSStatus status = HIViewFindByID(HIViewGetRoot(window), {kQM_Signature, number}, &control);
  if (status != noErr) return status;
  constexpr EventTypeSpec kDraw{kEventClassControl, kEventControlDraw};
  status = InstallEventHandler(GetControlEventTarget(control), QM_ImageViewEventHandler, 1, &kDraw,
                               control);
  return status != noErr ? QM_ReportFailure("InstallControlEventHandler", status) : status;
}

SInt32 ClearText(WindowRef window, SInt32 number) {
  const SInt32 status = GL_SetDialogItemTextByID(window, kQM_Signature, number, CFSTR(""));
  if (status != noErr) GL_SysBeep();
  return status;
}

/// Reads the command of a command event.
SInt32 GetCommand(EventRef event, HICommand* command) {
  const OSStatus status = GetEventParameter(event, kEventParamDirectObject, typeHICommand, nullptr,
                                            sizeof *command, nullptr, command);
  return status != noErr ? QM_ReportFailure("GetEventParameter", status) : status;
}

SInt32 ChooseMask(WindowRef window, QM_MaskData* data) {
  SInt32 status = NS_GetSingleFileFromUser(NS_EventProcPrototype, NS_FileExtensionFilter,
                                           CFSTR(".png"), CFSTR("Quillmere"),
                                           CFSTR("Please select a png file"), &data->maskFile);
  if (status == userCanceledErr) return noErr;
  if (status != noErr) return QM_ReportFailure("NS_GetSingleFileFromUser", status);
  status = QM_SetFileNameInDialog(window, &data->maskFile, kQM_MaskName);
  if (status != noErr) return QM_ReportFailure("QM_SetFileNameInDialog 1", status);
  status = QM_SetMaskPictureInDialog(window);
  return status != noErr ? QM_ReportFailure("QM_SetMaskPictureInDialog", status) : status;
}

SInt32 ChooseSource(WindowRef window, QM_MaskData* data) {
  SInt32 status =
      NS_GetSingleFolderFromUser(NS_EventProcPrototype, nullptr, nullptr,
                                 CFSTR("Please select the source folder"), &data->sourceFolder);
  if (status == userCanceledErr) return noErr;
  if (status != noErr) return QM_ReportFailure("NS_GetSingleFolderFromUser 1", status);
  status = QM_SetFileNameInDialog(window, &data->sourceFolder, kQM_SourceName);
  if (status != noErr) return QM_ReportFailure("QM_SetFileNameInDialog 2", status);
  status = QM_SetNumMoviesInDialog(window);
  if (status != noErr) return QM_ReportFailure("QM_SetNumMoviesInDialog", status);
  status = QM_SetNumJpegsInDialog(window);
  return status != noErr ? QM_ReportFailure("QM_SetNumJpegsInDialog", status) : status;
}

SInt32 ChooseTarget(WindowRef window, QM_MaskData* data) {
  SInt32 status =
      NS_GetSingleFolderFromUser(NS_EventProcPrototype, nullptr, nullptr,
                                 CFSTR("Please select the target folder"), &data->targetFolder);
  if (status == userCanceledErr) return noErr;
  if (status != noErr) return QM_ReportFailure("NS_GetSingleFolderFromUser 2", status);
  status = QM_SetFileNameInDialog(window, &data->targetFolder, kQM_TargetName);
  return status != noErr ? QM_ReportFailure("QM_SetFileNameInDialog 3", status) : status;
}

SInt32 Apply(WindowRef window, const QM_MaskData* data) {
  if (data->busy != 0) return noErr;  // a job never starts within a job
  SInt32 status = GL_ActivateDialogItemByID(window, kQM_Signature, kQM_Apply, 0);
  if (status != noErr) return QM_ReportFailure("GL_ActivateDialogItemByID", status);
  // The dimmed button is to be on screen before the job holds the event loop up.
  status = GL_RenderDialogItemByID(window, kQM_Signature, kQM_Apply);
  if (status != noErr) return QM_ReportFailure("GL_RenderDialogItemByID", status);
  status = HIWindowFlush(window);
  if (status != noErr) return QM_ReportFailure("HIWindowFlush", status);
  status = QM_ApplyMask(window);
  if (status != noErr) return QM_ReportFailure("QM_ApplyMask", status);
  if (!IsValidWindowPtr(window)) return noErr;  // closed during the job: nothing is left to clear
  status = QM_ClearDialogItems(window);
  return status != noErr ? QM_ReportFailure("QM_ClearDialogItems", status) : status;
}

SInt32 HandleHit(WindowRef window, SInt32 number, QM_MaskData* data) {
  switch (number) {
    case kQM_ChooseMask:
      return ChooseMask(window, data);
    case kQM_ChooseSource:
      return ChooseSource(window, data);
    case kQM_ChooseTarget:
      return ChooseTarget(window, data);
    case kQM_Apply:
      return Apply(window, data);
    default:
      return noErr;
  }
}

/// Finds out which control was hit and acts on it.
OSStatus HandleControlEvent(EventRef event, WindowRef window) {
  ControlRef control = nullptr;
  OSStatus status = GetEventParameter(event, kEventParamDirectObject, typeControlRef, nullptr,
                                      kReferenceSize, nullptr, static_cast<void*>(&control));
  if (status != noErr) {
    QM_ReportFailure("GetEventParameter", status);
    return eventNotHandledErr;
  }
  ControlID id{};
  status = GetControlID(control, &id);
  if (status != noErr) return eventNotHandledErr;
  OSStatus event_status = eventNotHandledErr;
  status = QM_HandleDlgControlHit(window, id.signature, id.id, &event_status);
  if (status != noErr) QM_ReportFailure("QM_HandleDlgContrHit", status);
  return event_status;
}

}  // namespace

SInt32 QM_ReportFailure(const char* what, SInt32 status) {
  GL_SysBeep();
  std::printf("%s failed with error %" PRId32 "\n", what, status);
  return status;
}

SInt32 QM_ReportExit(const char* function, SInt32 status) {
  std::printf("%s exiting after error\n", function);
  return status;
}

QM_MaskData* QM_GetMaskData(WindowRef window) {
  const auto* record = static_cast<const QM_DialogRec*>(GetWRefCon(window));
  return record != nullptr ? record->maskData : nullptr;
}

SInt32 QM_OpenDialog() {
  WindowRef window = nullptr;
  SInt32 status = GL_CreateWindowFromNibByName(CFSTR("main"), CFSTR("MainWindow"), &window);
  if (status != noErr) return QM_ReportFailure("GL_CreateWindowFromNibByName", status);
  // The window's records are for the rest of the process, as its handlers are.
  auto* data = std::make_unique<QM_MaskData>().release();
  auto* record = std::make_unique<QM_DialogRec>().release();
  *record = {window, kQM_MaskName, data};
  SetWRefCon(window, record);
  status = QM_InitDialog(window);
  if (status != noErr) return QM_ReportFailure("QM_InitDialog", status);
  constexpr EventTypeSpec kTypes[] = {{kEventClassCommand, kEventCommandProcess},
                                      {kEventClassControl, kEventControlHit}};
  status =
      InstallEventHandler(GetWindowEventTarget(window), QM_DialogEventHandler, 2, kTypes, window);
  if (status != noErr) return status;
  constexpr UInt16 kKeyDownMask = 8;
  FlushEvents(kKeyDownMask, 0);
  SelectWindow(window);
  ShowWindow(window);
  return noErr;
}

SInt32 QM_InitDialog(WindowRef window) {
  QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return GL_NilPointerErr;
  data->window = window;
  SInt32 status =
      GL_HIViewGetFrameByID(window, kQM_Signature, kQM_MaskPreview, &data->maskViewFrame);
  if (status != noErr) return QM_ReportFailure("GL_HIViewGetFrameByID", status);
  status = QM_SetApplyButtonActive(window);
  if (status != noErr) return QM_ReportFailure("QM_SetDefaultButtonActive", status);
  status = QM_ClearDialogItems(window);
  if (status != noErr) return QM_ReportFailure("QM_ClearDialogItems", status);
  for (const SInt32 number : {kQM_MaskPreview, kQM_Icon}) {
    status = InstallDrawHandler(window, number);
    if (status != noErr) return status;
  }
  status = QM_SetIconInDialog(window);
  return status != noErr ? QM_ReportFailure("QM_SetIconInDialog", status) : status;
}

OSStatus QM_AppEventHandler(EventHandlerCallRef /*call*/, EventRef event, void* /*user_data*/) {
  HICommand command{};
  GetCommand(event, &command);
  return eventNotHandledErr;
}

OSStatus QM_DialogEventHandler(EventHandlerCallRef /*call*/, EventRef event, void* user_data) {
  if (GetEventClass(event) == kEventClassControl && GetEventKind(event) == kEventControlHit) {
    return HandleControlEvent(event, static_cast<WindowRef>(user_data));
  }
  HICommand command{};
  if (GetCommand(event, &command) == noErr && command.commandID == kHICommandClose) {
    const SInt32 status = GL_PostQuitEvent();
    if (status != noErr) QM_ReportFailure("GL_PostQuitEvent", status);
  }
  return eventNotHandledErr;
}

OSStatus QM_ImageViewEventHandler(EventHandlerCallRef /*call*/, EventRef event,
                                  void* /*user_data*/) {
  ControlRef control = nullptr;
  HIShapeRef shape = nullptr;
  CGContextRef context = nullptr;
  GetEventParameter(event, kEventParamDirectObject, typeControlRef, nullptr, kReferenceSize,
                    nullptr, static_cast<void*>(&control));
  GetEventParameter(event, kEventParamShape, typeHIShapeRef, nullptr, kReferenceSize, nullptr,
                    static_cast<void*>(&shape));
  GetEventParameter(event, kEventParamCGContextRef, typeCGContextRef, nullptr, kReferenceSize,
                    nullptr, static_cast<void*>(&context));
  HIRect bounds{};
  if (shape != nullptr) {
    HIShapeGetBounds(shape, &bounds);
  } else {
    HIViewGetBounds(control, &bounds);
  }
  HIThemeSetFill(kThemeBrushDialogBackgroundActive, nullptr, context, kHIThemeOrientationNormal);
  CGContextFillRect(context, bounds);
  return eventNotHandledErr;
}

SInt32 QM_HandleDlgControlHit(WindowRef window, OSType /*signature*/, SInt32 number,
                              OSStatus* event_status) {
  *event_status = noErr;
  QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return QM_ReportExit("QM_HandleDlgControlHit", GL_NilPointerErr);
  SInt32 status = HandleHit(window, number, data);
  if (status == noErr && IsValidWindowPtr(window)) {
    status = QM_SetApplyButtonActive(window);
    if (status != noErr) QM_ReportFailure("QM_SetApplyButtonActive", status);
  }
  return status != noErr ? QM_ReportExit("QM_HandleDlgControlHit", status) : status;
}

SInt32 QM_SetApplyButtonActive(WindowRef window) {
  const QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return QM_ReportExit("QM_SetApplyButtonActive", GL_NilPointerErr);
  const bool active = MF_FSRefValid(&data->maskFile) && MF_FSRefValid(&data->sourceFolder) &&
                      MF_FSRefValid(&data->targetFolder) && data->busy == 0;
  const SInt32 status = GL_ActivateDialogItemByID(window, kQM_Signature, kQM_Apply, active);
  if (status == noErr) return status;
  QM_ReportFailure("GL_ActivateDialogItemByID", status);
  return QM_ReportExit("QM_SetApplyButtonActive", status);
}

SInt32 QM_ClearDialogItems(WindowRef window) {
  QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return QM_ReportExit("QM_ClearDialogItems", GL_NilPointerErr);
  SInt32 status = ClearText(window, kQM_MaskName);
  if (status == noErr) {
    data->maskFile = {};
    status = ClearText(window, kQM_SourceName);
  }
  if (status == noErr) {
    data->sourceFolder = {};
    status = ClearText(window, kQM_TargetName);
  }
  if (status == noErr) {
    data->targetFolder = {};
    status = ClearText(window, kQM_JpegCount);
  }
  if (status == noErr) {
    data->jpegCount = 0;
    status = ClearText(window, kQM_MovieCount);
  }
  if (status == noErr) {
    data->movieCount = 0;
    status = GL_ImageViewSetImageByID(window, kQM_Signature, kQM_MaskPreview, nullptr);
    if (status != noErr) QM_ReportFailure("GL_ImageViewSetImageByID", status);
  }
  return status != noErr ? QM_ReportExit("QM_ClearDialogItems", status) : status;
}

SInt32 QM_SetFileNameInDialog(WindowRef window, const FSRef* file, SInt32 text_control_number) {
  Owned<CFStringRef> name;
  SInt32 status = GL_CopyFileDirNameAsCFString(file, name.out());
  if (status != noErr) {
    QM_ReportFailure("GL_CopyFileDirNameAsCFString", status);
    return QM_ReportExit("QM_SetFileNameInDialog", status);
  }
  status = GL_SetDialogItemTextByID(window, kQM_Signature, text_control_number, name.get());
  if (status == noErr) return status;
  QM_ReportFailure("GL_SetDialogItemTextByID", status);
  return QM_ReportExit("QM_SetFileNameInDialog", status);
}

SInt32 QM_SetMaskPictureInDialog(WindowRef window) {
  const QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return QM_ReportExit("QM_SetMaskPictureInDialog", GL_NilPointerErr);
  const Owned<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, &data->maskFile));
  const Owned<CGImageSourceRef> source(CreatePngSource(url.get()));
  if (!source) return noErr;
  const Owned<CGImageRef> image(CGImageSourceCreateImageAtIndex(source.get(), 0, nullptr));
  SInt32 status = noErr;
  if (image) {
    status = GL_ScaleImageView(window, image.get(), &data->maskViewFrame, kQM_Signature,
                               kQM_MaskPreview);
    if (status != noErr) {
      QM_ReportFailure("GL_ScaleImageView", status);
      return QM_ReportExit("QM_SetMaskPictureInDialog", status);
    }
  }
  status = GL_ImageViewSetImageByID(window, kQM_Signature, kQM_MaskPreview, image.get());
  if (status == noErr) return status;
  QM_ReportFailure("GL_ImageViewSetImageByID", status);
  return QM_ReportExit("QM_SetMaskPictureInDialog", status);
}

SInt32 QM_SetIconInDialog(WindowRef window) {
  Owned<CFURLRef> url;
  SInt32 status = CF_CopyNamedFileUrlInAppBundle(CFSTR(kIconName), url.out());
  if (status != noErr) return QM_ReportFailure("QM_SetIconInDialog", status);
  const Owned<CGImageSourceRef> source(CreatePngSource(url.get()));
  if (!source) return noErr;
  const Owned<CGImageRef> image(CGImageSourceCreateImageAtIndex(source.get(), 0, nullptr));
  status = GL_ImageViewSetImageByID(window, kQM_Signature, kQM_Icon, image.get());
  return status != noErr ? QM_ReportFailure("GL_ImageViewSetImageByID", status) : status;
}

SInt32 QM_SetNumMoviesInDialog(WindowRef window) {
  QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return QM_ReportExit("QM_SetNumMoviesInDialog", GL_NilPointerErr);
  GL_FileObjectElement* list = nullptr;
  SInt32 status = QT_MakeFolderMovieFileList(&data->sourceFolder, &list, 1, 0);
  if (status != noErr) {
    QM_ReportFailure("QT_MakeFolderMovieFileList", status);
    return QM_ReportExit("QM_SetNumMoviesInDialog", status);
  }
  data->movieCount = LL_PtrListCount(list);
  void* first = list;
  LL_DisposeLinkedList(&first);
  status = GL_SetDialogItemTextIntByID(window, kQM_Signature, kQM_MovieCount, data->movieCount);
  return status != noErr ? QM_ReportExit("QM_SetNumMoviesInDialog", status) : status;
}

SInt32 QM_SetNumJpegsInDialog(WindowRef window) {
  QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return QM_ReportExit("QM_SetNumJpegsInDialog", GL_NilPointerErr);
  SInt32 status = GL_CountFilesWithExtension(&data->sourceFolder, CFSTR("jpg"), &data->jpegCount);
  if (status != noErr) {
    QM_ReportFailure("GL_CountFilesWithExtension", status);
    return QM_ReportExit("QM_SetNumJpegsInDialog", status);
  }
  status = GL_SetDialogItemTextIntByID(window, kQM_Signature, kQM_JpegCount, data->jpegCount);
  return status != noErr ? QM_ReportExit("QM_SetNumJpegsInDialog", status) : status;
}

SInt32 QM_Start() {
  constexpr EventTypeSpec kCommand{kEventClassCommand, kEventCommandProcess};
  SInt32 status =
      InstallEventHandler(GetApplicationEventTarget(), QM_AppEventHandler, 1, &kCommand, nullptr);
  if (status != noErr) return QM_ReportExit("main", status);
  status = EnterMovies();
  if (status != noErr) {
    QM_ReportFailure("EnterMovies", status);
    return QM_ReportExit("main", status);
  }
  IBNibRef nib = nullptr;
  status = CreateNibReference(CFSTR("main"), &nib);
  if (status != noErr) {
    QM_ReportFailure("CreateNibReference", status);
    return QM_ReportExit("main", status);
  }
  status = SetMenuBarFromNib(nib, CFSTR("MenuBar"));
  DisposeNibReference(nib);
  quillmere::debug::Checked(kDBG_MainTag, status, "err == 0 ", "END", "SetMenuBarFromNib failed");
  if (status != noErr) return QM_ReportExit("main", status);
  status = QM_OpenDialog();
  if (status != noErr) {
    QM_ReportFailure("QM_OpenDialog", status);
    return QM_ReportExit("main", status);
  }
  return noErr;
}
