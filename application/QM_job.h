/// The overlay job: the mask over every movie and every still of the source folder.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "file_references.h"
#include "movie_toolbox.h"

/// What somebody who watches a job is told; any member may be null. The window shows a job by
/// itself and needs none.
struct QM_JobObserver {
  /// A file is done. `status` is that of the step that failed, 0 for none.
  void (*file_done)(const FSRef* file, SInt32 status, void* user_data);
  /// The job is over, with the status that QM_ApplyMask returns.
  void (*job_done)(SInt32 status, void* user_data);
  void* user_data;
};
/// Sets who watches the jobs from now on; the record is copied, null ends it.
void QM_SetJobObserver(const QM_JobObserver* observer);

/// Runs the whole job with the window's choices. A file that fails is reported and passed over. The
/// result is the first failure before the files, or else that of the last still's last step.
///
/// Neither the mask nor any source of the job is ever replaced by an output: an output of such a
/// name is left out. When the window has gone, the files that remain are left alone.
SInt32 QM_ApplyMask(WindowRef window);

/// Adds the overlay to an open movie: a new track in front of all others, whose one sample is the
/// image of the PNG, shown with straight alpha for the movie's duration. `data_reference` is an
/// alias of the PNG, offset and size say where in it the image lies, in bytes. The two reserved
/// fields of the description are set to 0.
SInt32 QM_OverlayPNG(Movie movie, Handle data_reference, ImageDescriptionHandle image_description,
                     UInt32 data_offset, UInt32 data_size);

/// Serves waiting events and moves the progress bar during a flatten. 4008, which ends the flatten,
/// once the window has gone. `reference_constant` is the address of the QM_MaskData.
OSErr QM_ProgressProc(Movie movie, SInt16 message, SInt16 operation, Fixed percent_done,
                      SInt64 reference_constant);
