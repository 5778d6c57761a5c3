/// Dialogs in which the user chooses a file or folder.
///
/// A dialog is created, run and disposed of. While it runs it reports to its event procedure: 2
/// when it opens, 12 when the user has acted, 3 at its end. One dialog runs at a time. Answers can
/// be given in advance without any dialog being shown, see automation.h. Main thread only.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "cf_strings.h"
#include "descriptors.h"
#include "memory_handles.h"

struct NavDialog;
using NavDialogRef = NavDialog*;

inline constexpr OSStatus kNavWrongDialogStateErr = -5694;
inline constexpr OSStatus kNavInvalidCustomControlMessageErr = -5697;

/// Selectors of the event procedure.
enum : SInt32 { kNavCBEvent = 0, kNavCBStart = 2, kNavCBTerminate = 3, kNavCBUserAction = 12 };
/// What the user did.
enum : UInt32 {
  kNavUserActionNone = 0,
  kNavUserActionCancel = 1,
  kNavUserActionOpen = 2,
  kNavUserActionSaveAs = 3,
  kNavUserActionChoose = 4
};
/// Flags of the options.
inline constexpr UInt32 kNavDefaultNavDlogOptions = 0xE4;
inline constexpr UInt32 kNavAllowMultipleFiles = 0x80;
inline constexpr UInt32 kNavAllowOpenPackages = 0x2000;
inline constexpr UInt32 kNavSupportPackages = 0x1000;

inline constexpr SInt32 kNavCtlSetLocation = 8;

/// Where a dialog stands, passed to its event procedure.
struct NavCBRec {
  UInt16 version;
  NavDialogRef context;
  UInt32 userAction;
};
/// What a filter learns of an item.
struct NavFileOrFolderInfo {
  UInt16 version;
  Boolean isFolder;
  Boolean visible;
};

using NavEventProcPtr = void (*)(SInt32 selector, NavCBRec* parameters, void* user_data);
/// True shows the item. `info` is a NavFileOrFolderInfo, `mode` 0 (the browser's list).
using NavObjectFilterProcPtr = Boolean (*)(AEDesc* item, void* info, void* user_data, SInt16 mode);

struct NavDialogCreationOptions {
  UInt16 version;
  UInt32 optionFlags;
  CFStringRef clientName;  ///< the program's name; lent
  CFStringRef message;     ///< what the user is asked; lent
  WindowRef parentWindow;
};

/// What the user chose: 256 bytes. Dispose of it with NavDisposeReply.
struct NavReplyRecord {
  UInt16 version;
  Boolean validRecord;
  Boolean replacing;
  Boolean isStationery;
  Boolean translationNeeded;
  AEDescList selection;  ///< the chosen objects, each an `fsrf`
  ScriptCode keyScript;
  Handle fileTranslation;
  CFStringRef saveFileName;
  Boolean saveFileExtensionHidden;
  UInt8 reserved[207];
};
static_assert(sizeof(NavReplyRecord) == 256);

OSStatus NavGetDefaultDialogCreationOptions(NavDialogCreationOptions* options);
/// A dialog for existing files. `types` and `preview` are null. A filter decides for each item if
/// it is shown and may be chosen. paramErr without an event procedure.
OSStatus NavCreateChooseFileDialog(const NavDialogCreationOptions* options, const void* types,
                                   NavEventProcPtr event_procedure, const void* preview,
                                   NavObjectFilterProcPtr filter, void* user_data,
                                   NavDialogRef* dialog);
/// A dialog for existing folders.
OSStatus NavCreateChooseFolderDialog(const NavDialogCreationOptions* options,
                                     NavEventProcPtr event_procedure, NavObjectFilterProcPtr filter,
                                     void* user_data, NavDialogRef* dialog);
/// Shows the dialog until the user has acted. kNavWrongDialogStateErr while another one runs.
OSStatus NavDialogRun(NavDialogRef dialog);
void NavDialogDispose(NavDialogRef dialog);
UInt32 NavDialogGetUserAction(NavDialogRef dialog);
/// The choice as a new reply; userCanceledErr if there is none.
OSStatus NavDialogGetReply(NavDialogRef dialog, NavReplyRecord* reply);
OSStatus NavDisposeReply(NavReplyRecord* reply);
/// Selector 8 opens the dialog in the folder that the `fsrf` descriptor at `parameters` names (a
/// file: in its folder).
OSStatus NavCustomControl(NavDialogRef dialog, SInt32 selector, void* parameters);
