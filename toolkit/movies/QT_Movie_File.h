/// Movie files and image files by file object: opening them, and telling which kind a file is.
///
/// Statuses are those of the movie toolbox and of the files layer; 0 is success.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "movie_toolbox.h"

struct GL_FileObjectElement;

/// Bits of the flags of QT_OpenMovieFileFP, each a property that the movie is opened with.
enum QT_OpenMovieFlags : UInt32 {
  QT_OpenMovieActive = 1U << 0,               ///< the movie is active from the start
  QT_OpenMovieDontResolveDataRefs = 1U << 1,  ///< data references are resolved when needed
  QT_OpenMovieDontAskUser = 1U << 2,          ///< the user is not asked for missing files
  QT_OpenMovieAsync = 1U << 8,                ///< opening may go on in the background
  QT_OpenMovieAudioPitch = 1U << 20           ///< sound keeps its pitch at other rates
};
/// Opens a movie or still. `visual_context` (may be null) is where it draws; it stays the caller's.
/// On success the caller owns `*movie`, otherwise it is null.
SInt32 QT_OpenMovieFileFP(const FSRef* file, UInt32 flags, QTVisualContextRef visual_context,
                          Movie* movie);

/// Tells if a graphics importer or the movie toolbox can open a file, and if the importer is to be
/// preferred. Outputs may be null. `flags` are those of CanQuickTimeOpenDataRef.
SInt32 QT_CanQuickTimeOpenFile(const FSRef* file, Boolean* can_open_with_importer,
                               Boolean* can_open_as_movie, Boolean* prefer_importer, UInt32 flags);
/// The same by the file's name and type, where they tell.
SInt32 QT_CanQuickTimeOpenFileFast(const FSRef* file, Boolean* can_open_with_importer,
                                   Boolean* can_open_as_movie, Boolean* prefer_importer);
/// True for a file of Finder type `MooV`, or whose name ends in ".mov" in any case.
SInt32 QT_IsMooV_File(const FSRef* file, Boolean* is_movie);

/// The files of a folder that open as movies and are not preferred as images, appended to `*list`
/// in the order of their names. `importer_flag` decides by name and type alone where they tell;
/// `require_moov` keeps only what QT_IsMooV_File accepts. Elements that were in the list before are
/// tested too. The result is the status of the last file's test.
SInt32 QT_MakeFolderMovieFileList(const FSRef* folder, GL_FileObjectElement** list,
                                  Boolean importer_flag, Boolean require_moov);

/// An importer for an image file; the caller closes it with CloseComponent.
SInt32 QT_GetGraphicsImporterForFile(const FSRef* file, GraphicsImportComponent* importer);
/// The description of an image file (a new handle, the caller's) and where its compressed bytes lie
/// in the file. On failure the handle is null.
SInt32 QT_GetImageReferenceFromFile(const FSRef* file, ImageDescriptionHandle* description,
                                    UInt32* data_offset, UInt32* data_size);
