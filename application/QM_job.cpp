#include "QM_job.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "GL_Controls.h"
#include "GL_Errors.h"
#include "GL_File.h"
#include "GL_Memory.h"
#include "GL_Process.h"
#include "GL_QuickDraw.h"
#include "GL_Strings_Unicode.h"
#include "LL_Linked_Lists.h"
#include "MF_FileObjects.h"
#include "QM_main.h"
#include "QM_still.h"
#include "QT_Movie_File.h"
#include "QT_Movie_Info.h"
#include "QT_Pictures.h"
#include "images.h"
#include "media_editing.h"
#include "replacement_guard.h"
#include "window_manager.h"

namespace {

using quillmere::AtExit;
using quillmere::Owned;
using quillmere::movies::ProtectFromReplacement;

QM_JobObserver job_observer{};

/// Keeps the files that a job reads from being replaced by its outputs, for as long as it lives.
class ProtectedSources {
 public:
  ProtectedSources() = default;
  ProtectedSources(const ProtectedSources&) = delete;
  ProtectedSources& operator=(const ProtectedSources&) = delete;
  ~ProtectedSources() {
    for (const FSRef& file : files_)
      ProtectFromReplacement(file, false);
  }
  void Add(const FSRef& file) {
    if (ProtectFromReplacement(file, true) == noErr) files_.push_back(file);
  }

 private:
  std::vector<FSRef> files_;
};

/// The image of the mask, for every file of a job.
struct MaskImage {
  AliasHandle alias = nullptr;
  ImageDescriptionHandle description = nullptr;
  UInt32 offset = 0;
  UInt32 size = 0;

  MaskImage() = default;
  MaskImage(const MaskImage&) = delete;
  MaskImage& operator=(const MaskImage&) = delete;
  ~MaskImage() {
    GL_DisposeHandle(&alias);
    GL_DisposeHandle(&description);
  }
};

void TellFileDone(const FSRef* file, SInt32 status) {
  if (job_observer.file_done != nullptr)
    job_observer.file_done(file, status, job_observer.user_data);
}

void DisposeList(GL_FileObjectElement** list) {
  void* first = *list;
  LL_DisposeLinkedList(&first);
  *list = nullptr;
}

/// Opens a file as a movie and adds the overlay. Failures are reported; the movie is the caller's
/// in any case.
SInt32 OpenWithOverlay(const FSRef* file, const MaskImage& mask, Movie* movie) {
  SInt32 status = QT_OpenMovieFileFP(file, 1, nullptr, movie);
  if (status != noErr) return QM_ReportFailure("QT_OpenMovieFileFP", status);
  status = QM_OverlayPNG(*movie, mask.alias, mask.description, mask.offset, mask.size);
  return status != noErr ? QM_ReportFailure("QM_OverlayJPEG", status) : status;
}

/// The file's name without its extension; failures are reported.
SInt32 CopyBareName(const FSRef* file, CFMutableStringRef* name) {
  SInt32 status = GL_CopyFileDirNameAsCFMutStr(file, name);
  if (status != noErr) return QM_ReportFailure("GL_CopyFileDirNameAsCFMutStr", status);
  status = GL_RemoveFileNameExtension(file, *name);
  return status != noErr ? QM_ReportFailure("GL_RemoveFileNameExtension", status) : status;
}

/// Writes one movie with its overlay. The flatten's own status is not reported; it is given back
/// for whoever watches the job.
SInt32 ProcessMovie(const FSRef* file, const MaskImage& mask, QM_MaskData* data) {
  Movie movie = nullptr;
  Owned<CFMutableStringRef> name;
  Handle output = nullptr;
  OSType output_type = 0;
  const AtExit clean_up([&movie, &output] {
    GL_DisposeHandle(&output);
    QT_DisposeMovie(&movie);
  });
  SInt32 status = OpenWithOverlay(file, mask, &movie);
  if (status == noErr) status = CopyBareName(file, name.out());
  if (status != noErr) return status;
  CFStringAppend(name.get(), CFSTR("-clean.mov"));
  status = QTNewDataReferenceFromFSRefCFString(&data->targetFolder, name.get(), 0, &output,
                                               &output_type);
  if (status != noErr) return QM_ReportFailure("QTNewDataReferenceFromFSRefCFString", status);
  SetMovieProgressProc(movie, QM_ProgressProc, reinterpret_cast<SInt64>(data));
  constexpr ScriptCode kSystemScript = -1;
  FlattenMovieDataToDataRef(movie, flattenAddMovieToDataFork, output, output_type, "TVOD"_4cc,
                            kSystemScript,
                            createMovieFileDeleteCurFile | createMovieFileDontCreateMovie);
  return GetMoviesError();
}

/// Writes one still with its overlay.
SInt32 ProcessStill(const FSRef* file, const MaskImage& mask, CGColorSpaceRef space,
                    QM_MaskData* data) {
  Movie movie = nullptr;
  const AtExit clean_up([&movie, data] {
    QT_DisposeMovie(&movie);
    CFRelease(data->stillName);
    data->stillName = nullptr;
  });
  SInt32 status = OpenWithOverlay(file, mask, &movie);
  if (status == noErr) status = CopyBareName(file, &data->stillName);
  if (status != noErr) return status;
  status = QT_DrawFirstFrame(movie, k32ARGBPixelFormat, space, QM_ImageAvailableCallback, data);
  if (status != noErr) return QM_ReportFailure("QT_DrawFirstFrame", status);
  if (data->stillError != noErr) QM_ReportFailure("QT_DrawFirstFrame", data->stillError);
  return status;
}

SInt32 PrepareMask(const QM_MaskData* data, MaskImage* mask) {
  SInt32 status = FSNewAlias(nullptr, &data->maskFile, &mask->alias);
  if (status != noErr) return QM_ReportFailure("FSNewAlias", status);
  status =
      QT_GetImageReferenceFromFile(&data->maskFile, &mask->description, &mask->offset, &mask->size);
  return status != noErr ? QM_ReportFailure("QT_PrepareReadingImageFromFile", status) : status;
}

/// The stills of the source folder, as many as were counted when it was chosen. Names beyond that
/// are not of this job; entries for files that have gone since stay zero.
SInt32 ListStills(const QM_MaskData* data, std::vector<FSRef>* stills) {
  stills->assign(static_cast<std::size_t>(std::max(data->jpegCount, 0)), FSRef{});
  return GL_ListFilesWithExtension(&data->sourceFolder, CFSTR("jpg"), stills->data(),
                                   static_cast<SInt32>(stills->size()));
}

void ProcessMovies(const GL_FileObjectElement* list, const MaskImage& mask, QM_MaskData* data) {
  for (const GL_FileObjectElement* element = list; element != nullptr; element = element->next) {
    if (!IsValidWindowPtr(data->window)) break;
    TellFileDone(&element->fileRef, ProcessMovie(&element->fileRef, mask, data));
    ++data->moviesDone;
  }
}

/// The status of the last still that was tried, 0 if there was none.
SInt32 ProcessStills(const std::vector<FSRef>& stills, const MaskImage& mask, QM_MaskData* data) {
  const Owned<CGColorSpaceRef> space(CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB));
  SInt32 status = noErr;
  for (const FSRef& still : stills) {
    if (!IsValidWindowPtr(data->window)) break;
    if (!MF_FSRefValid(&still)) continue;
    status = ProcessStill(&still, mask, space.get(), data);
    TellFileDone(&still, status != noErr ? status : data->stillError);
  }
  return status;
}

SInt32 RunJob(WindowRef window, QM_MaskData* data) {
  SInt32 status = GL_SetDialogItemValueByID(window, kQM_Signature, kQM_Progress, 0);
  if (status != noErr) return QM_ReportFailure("GL_SetDialogItemValueByID", status);
  status = GL_SetProgressIndicatorStateByID(window, kQM_Signature, kQM_Progress, 1);
  if (status != noErr) return QM_ReportFailure("GL_SetProgressIndicatorStateByID", status);
  MaskImage mask;
  status = PrepareMask(data, &mask);
  if (status != noErr) return status;

  GL_FileObjectElement* list = nullptr;
  const AtExit dispose([&list] { DisposeList(&list); });
  status = QT_MakeFolderMovieFileList(&data->sourceFolder, &list, 1, 0);
  if (status != noErr) return QM_ReportFailure("QT_MakeFolderMovieFileList", status);
  ProtectedSources sources;
  sources.Add(data->maskFile);
  for (const GL_FileObjectElement* element = list; element != nullptr; element = element->next) {
    sources.Add(element->fileRef);
  }
  std::vector<FSRef> stills;
  if (ListStills(data, &stills) == noErr) {
    for (const FSRef& still : stills) {
      if (MF_FSRefValid(&still)) sources.Add(still);
    }
  }
  ProcessMovies(list, mask, data);
  DisposeList(&list);

  status = ListStills(data, &stills);
  if (status != noErr) return QM_ReportFailure("GL_ListFilesWithExtension", status);
  return ProcessStills(stills, mask, data);
}

/// The bar's value for the part of the job that is done, in single precision: quotient first.
SInt32 BarValue(const QM_MaskData* data, float done, SInt32 maximum) {
  const float value = done / static_cast<float>(data->movieCount) * static_cast<float>(maximum);
  // Written so that what is no number, as 0 movies give, ends at 0.
  if (!(value > 0.0F)) return 0;
  return value < static_cast<float>(maximum) ? static_cast<SInt32>(value) : maximum;
}

SInt32 FailOverlay(const char* step, SInt32 status) {
  QM_ReportFailure(step, status);
  return QM_ReportExit("QM_OverlayJPEG", status);
}

}  // namespace

void QM_SetJobObserver(const QM_JobObserver* observer) {
  job_observer = observer != nullptr ? *observer : QM_JobObserver{};
}

SInt32 QM_ApplyMask(WindowRef window) {
  QM_MaskData* data = QM_GetMaskData(window);
  if (data == nullptr) return QM_ReportExit("QM_ApplyMask", GL_NilPointerErr);
  data->busy = 1;
  data->moviesDone = 0;
  const SInt32 status = RunJob(window, data);
  data->busy = 0;
  GL_SetProgressIndicatorStateByID(window, kQM_Signature, kQM_Progress, 0);
  if (status != noErr) QM_ReportExit("QM_ApplyMask", status);
  if (job_observer.job_done != nullptr) job_observer.job_done(status, job_observer.user_data);
  return status;
}

SInt32 QM_OverlayPNG(Movie movie, Handle data_reference, ImageDescriptionHandle image_description,
                     UInt32 data_offset, UInt32 data_size) {
  // The fields of an image description, in native order.
  constexpr std::size_t kReserved32 = 8;
  constexpr std::size_t kReserved16 = 12;
  constexpr std::size_t kHeight = 34;

  const TimeScale time_scale = GetMovieTimeScale(movie);
  const TimeValue duration = GetMovieDuration(movie);
  SInt32 status = QT_SetMovieApertureMode(movie, "clea"_4cc);
  if (status != noErr) return FailOverlay("QT_SetMovieApertureMode", status);
  Rect box{};
  GetMovieBox(movie, &box);
  const SInt32 box_width = GL_WidthOfSize(GL_GetRectSize(&box));
  SInt16 image_height = 0;
  std::memcpy(&image_height, *image_description + kHeight, sizeof image_height);

  Track track = NewMovieTrack(movie, static_cast<Fixed>(box_width * 0x10000),
                              static_cast<Fixed>(image_height * 0x10000), 0);
  if (track == nullptr) return FailOverlay("NewMovieTrack", GL_NilPointerErr);
  Media media = NewTrackMedia(track, "vide"_4cc, time_scale, data_reference, "alis"_4cc);
  std::memset(*image_description + kReserved32, 0, sizeof(UInt32));
  std::memset(*image_description + kReserved16, 0, sizeof(UInt16));
  status = AddMediaSampleReference(media, data_offset, data_size, duration, image_description, 1, 0,
                                   nullptr);
  if (status != noErr) return FailOverlay("AddMediaSampleReference", status);
  constexpr Fixed kNormalRate = 0x10000;
  status = InsertMediaIntoTrack(track, 0, 0, duration, kNormalRate);
  if (status != noErr) return FailOverlay("InsertMediaIntoTrack", status);
  SInt16 front = 0;
  SInt16 back = 0;
  QT_GetMinMaxLayer(movie, &front, &back);
  SetTrackLayer(track, static_cast<SInt16>(front - 1));
  MediaSetGraphicsMode(GetMediaHandler(media), graphicsModeStraightAlpha, nullptr);
  return noErr;
}

OSErr QM_ProgressProc(Movie /*movie*/, SInt16 message, SInt16 /*operation*/, Fixed percent_done,
                      SInt64 reference_constant) {
  constexpr OSErr kWindowGone = GL_NilPointerErr;
  const auto* data = reinterpret_cast<const QM_MaskData*>(reference_constant);
  if (!IsValidWindowPtr(data->window)) return kWindowGone;
  if (message != movieProgressOpen && message != movieProgressUpdatePercent) return noErr;
  GL_HandlePendingEvents();
  // One of these events may have closed the window.
  if (!IsValidWindowPtr(data->window)) return kWindowGone;

  SInt32 maximum = 0;
  SInt32 value = 0;
  GL_GetDialogItemMaxByID(data->window, kQM_Signature, kQM_Progress, &maximum);
  GL_GetDialogItemValueByID(data->window, kQM_Signature, kQM_Progress, &value);
  const bool opens = message == movieProgressOpen;
  const float percent = opens ? 0.0F : static_cast<float>(percent_done / 65536.0);
  const SInt32 wanted = BarValue(data, percent + static_cast<float>(data->moviesDone), maximum);
  if (wanted != value) {
    GL_SetDialogItemValueByID(data->window, kQM_Signature, kQM_Progress, wanted);
    if (opens) GL_ForceDialogItemUpdateByID(data->window, kQM_Signature, kQM_Progress);
  }
  return noErr;
}
