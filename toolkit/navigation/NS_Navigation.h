/// The user's choice of a file or folder, each as one call: the dialog is created, run, read and
/// disposed of. userCanceledErr (-128) when the user cancels. Main thread only.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"
#include "navigation_services.h"

/// What the event procedure and the filters of one dialog share; zeroed before each.
struct NS_CallbackRec {
  Boolean done;            ///< the dialog is over
  FSRef startLocation;     ///< where the dialog opens, if valid
  NavReplyRecord reply;    ///< filled by the event procedure
  UInt32 userAction;       ///< what the user did last
  SInt32 replyStatus;      ///< the status of the dialog as a whole
  const void* filterData;  ///< for NS_FileExtensionFilter: a CFStringRef
};

/// The event procedure that all dialogs share: opens the start location, and takes the reply when
/// the user has acted.
void NS_EventProcPrototype(SInt32 selector, NavCBRec* parameters, void* callback_record);
/// An event procedure that does nothing.
void NS_DummyEventHandler(SInt32 selector, NavCBRec* parameters, void* callback_record);

/// Lets the user choose one file. `filter`, `filter_data`, `client_name` and `message` may be null;
/// without an event procedure the result is NS_NoEventProcErr and no dialog is shown. `file`
/// changes only at status 0.
SInt32 NS_GetSingleFileFromUser(NavEventProcPtr event_procedure, NavObjectFilterProcPtr filter,
                                const void* filter_data, CFStringRef client_name,
                                CFStringRef message, FSRef* file);
/// Lets the user choose one folder; the same. The dialog opens in `folder` if that is valid.
SInt32 NS_GetSingleFolderFromUser(NavEventProcPtr event_procedure, NavObjectFilterProcPtr filter,
                                  const void* filter_data, CFStringRef message, FSRef* folder);

/// A deep copy; the caller disposes of it.
SInt32 NS_CopyReply(const NavReplyRecord* from, NavReplyRecord* to);
/// The first item as a file reference. An empty list gives status 0; then, and on a failure, the
/// reference is cleared.
SInt32 NS_GetSingleFileObjectFromAEDescList(const AEDescList* list, FSRef* reference);
/// Item `index` from 1 as a file reference, which is cleared on a failure.
SInt32 NS_GetNthFileObjectFromAEDescList(const AEDescList* list, SInt32 index, FSRef* reference);
/// The file reference that a descriptor holds or can be coerced to.
SInt32 NS_GetFileObjectFromAEDesc(const AEDesc* descriptor, FSRef* reference);

/// A filter that shows folders, and files whose name ends in the callback record's `filterData`, a
/// CFStringRef such as ".png", ignoring case. Nothing is shown for a null or empty one.
Boolean NS_FileExtensionFilter(AEDesc* item, void* info, void* callback_record, SInt16 mode);
