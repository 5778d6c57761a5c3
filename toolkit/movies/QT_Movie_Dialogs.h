/// The user's choice of a movie file, and what the dialog shows.
///
/// Filters show folders; with a descriptor that names no file they show nothing. They are
/// NavObjectFilterProcPtr.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "movie_toolbox.h"
#include "navigation_services.h"

/// Lets the user choose a movie file and opens it, as QT_OpenMovieFile or QT_OpenMovieFileFP do.
/// `options` may be null, or has the program's name; without a prompt it is "Please select a
/// movie". What ends the dialog without a choice is the result (userCanceledErr).
SInt32 QT_OpenMovieWithDialog(FSRef* file, const NavDialogCreationOptions* options,
                              CFStringRef prompt, SInt16 flags, Movie* movie);
SInt32 QT_OpenMovieWithDialogFP(FSRef* file, const NavDialogCreationOptions* options,
                                CFStringRef prompt, UInt32 flags, QTVisualContextRef visualContext,
                                Movie* movie);

/// Files that open as movies and not with a graphics importer.
Boolean QT_MovieFilter(AEDesc* item, void* info, void* callbackRecord, SInt16 mode);
/// Those of Finder type `MooV` or extension "mov" among them.
Boolean QT_MoovFilter(AEDesc* item, void* info, void* callbackRecord, SInt16 mode);
/// Files of the extension "mov", and alias files that lead to one.
Boolean QT_movExtensionFilter(AEDesc* item, void* info, void* callbackRecord, SInt16 mode);
