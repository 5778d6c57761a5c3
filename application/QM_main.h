/// The main window: its records, its twelve controls, and what happens when one is hit.
///
/// A failure plays the system alert and prints the failed call and its status on standard output;
/// on the way up each function that gives up prints its name. Everything runs on the main thread.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "cf_strings.h"
#include "file_references.h"
#include "graphics_types.h"

/// The signature of every control, and the numbers.
inline constexpr OSType kQM_Signature = "ORw1"_4cc;
enum QM_Control : SInt32 {
  kQM_MaskName = 2000,
  kQM_ChooseMask = 2001,
  kQM_SourceName = 2002,
  kQM_ChooseSource = 2003,
  kQM_TargetName = 2004,
  kQM_ChooseTarget = 2005,
  kQM_Apply = 2006,
  kQM_MaskPreview = 2007,
  kQM_Progress = 2008,
  kQM_MovieCount = 2009,
  kQM_JpegCount = 2010,
  kQM_Icon = 2011
};

/// All the application's state. The movie progress procedure gets it as its reference constant.
struct QM_MaskData {
  WindowRef window;
  HIRect maskViewFrame;  ///< of the preview, as the nib laid it out
  FSRef maskFile;        ///< all zero for none, as the two below
  FSRef sourceFolder;
  FSRef targetFolder;
  CFMutableStringRef stillName;  ///< of the still in progress, without extension
  Boolean busy;                  ///< a job runs
  SInt32 moviesDone;             ///< movies passed so far in this job, failed ones included
  SInt32 movieCount;             ///< when the source folder was chosen
  SInt32 jpegCount;              ///< when the source folder was chosen
  SInt32 stillError;             ///< status of the last still that was written
};

/// The window's reference constant. Both records live until the process ends.
struct QM_DialogRec {
  WindowRef window;
  SInt32 dialogID;  ///< where the control numbers start
  QM_MaskData* maskData;
};

/// Starts the program: handlers, movie toolbox, menu bar and window. The status of the first
/// failure.
SInt32 QM_Start();

/// Makes the window from the nib, prepares and shows it.
SInt32 QM_OpenDialog();
SInt32 QM_InitDialog(WindowRef window);

OSStatus QM_AppEventHandler(EventHandlerCallRef call, EventRef event, void* user_data);
/// `user_data` is the window.
OSStatus QM_DialogEventHandler(EventHandlerCallRef call, EventRef event, void* user_data);
/// Paints the dialog's background behind an image view; `user_data` is the control.
OSStatus QM_ImageViewEventHandler(EventHandlerCallRef call, EventRef event, void* user_data);

/// Acts on the hit of a control. `event_status` becomes 0: a hit counts as handled whatever comes
/// of it.
SInt32 QM_HandleDlgControlHit(WindowRef window, OSType signature, SInt32 number,
                              OSStatus* event_status);
/// Makes Apply active if the mask and both folders exist and no job runs, else inactive.
SInt32 QM_SetApplyButtonActive(WindowRef window);
/// Forgets all choices and empties what shows them.
SInt32 QM_ClearDialogItems(WindowRef window);
/// Shows the name of a file or folder in a static text.
SInt32 QM_SetFileNameInDialog(WindowRef window, const FSRef* file, SInt32 text_control_number);
/// Shows the mask in the preview, fitted into the frame that the nib gives it.
SInt32 QM_SetMaskPictureInDialog(WindowRef window);
SInt32 QM_SetIconInDialog(WindowRef window);
/// Counts the movies of the source folder and shows the number.
SInt32 QM_SetNumMoviesInDialog(WindowRef window);
/// Counts the names that end in "jpg" in the source folder and shows the number.
SInt32 QM_SetNumJpegsInDialog(WindowRef window);

/// The state of a window, null once it has gone.
QM_MaskData* QM_GetMaskData(WindowRef window);
/// Plays the alert, prints "`what` failed with error `status`" and gives the status back.
SInt32 QM_ReportFailure(const char* what, SInt32 status);
/// Prints "`function` exiting after error" and gives the status back.
SInt32 QM_ReportExit(const char* function, SInt32 status);
