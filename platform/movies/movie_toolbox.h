/// The movie toolbox: opening movies, adding tracks that refer to samples elsewhere, flattening.
///
/// A Movie, its Tracks and their Media belong to one movie; DisposeMovie frees them all. Indices of
/// tracks and data references count from 1. Times are in the movie's or media's own time scale.
/// Functions without a status of their own leave it in GetMoviesError. One thread at a time works
/// on one movie.
#pragma once

#include "aliases.h"
#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"
#include "memory_handles.h"

struct MovieRecord;
struct TrackRecord;
struct MediaRecord;
struct ImporterRecord;
struct QTVisualContext;
using Movie = MovieRecord*;
using Track = TrackRecord*;
using Media = MediaRecord*;
/// What plays a media: here the media itself, which holds graphics mode and op colour.
using MediaHandler = MediaRecord*;
using GraphicsImportComponent = ImporterRecord*;
using QTVisualContextRef = QTVisualContext*;

/// An image description in native byte order: the 86-byte record, then extension atoms as in the
/// file (big-endian). The offsets are fixed: cType at 4, two reserved fields at 8 (32 bits) and 12
/// (16 bits), dataRefIndex at 14, width at 32, height at 34, depth at 82, colour table id at 84.
using ImageDescriptionHandle = Handle;
/// Any sample description, in the same form.
using SampleDescriptionHandle = Handle;

/// Statuses of the movies family.
inline constexpr OSErr couldNotResolveDataRef = -2000;
inline constexpr OSErr badImageDescription = -2001;
inline constexpr OSErr badPublicMovieAtom = -2002;
inline constexpr OSErr cantFindHandler = -2003;
inline constexpr OSErr cantOpenHandler = -2004;
inline constexpr OSErr noMediaHandler = -2006;
inline constexpr OSErr invalidMedia = -2008;
inline constexpr OSErr invalidTrack = -2009;
inline constexpr OSErr invalidMovie = -2010;
inline constexpr OSErr invalidSampleTable = -2011;
inline constexpr OSErr invalidDataRef = -2012;
inline constexpr OSErr invalidHandler = -2013;
inline constexpr OSErr invalidDuration = -2014;
inline constexpr OSErr invalidTime = -2015;
inline constexpr OSErr badEditList = -2017;
inline constexpr OSErr movieToolboxUninitialized = -2020;
inline constexpr OSErr invalidDataRefContainer = -2038;
inline constexpr OSErr noMovieFound = -2048;
inline constexpr OSErr dataAlreadyOpenForWrite = -2044;
inline constexpr OSErr progressProcAborted = -2019;
inline constexpr OSErr kQTPropertyNotSupportedErr = -2195;

/// Call once before anything else.
OSErr EnterMovies();
/// The status of the calling thread's last toolbox call that has none of its own.
OSErr GetMoviesError();

// --- Opening -------------------------------------------------------------------------------------

/// A data reference with its type, the value of the property `dloc`/`dref`.
struct DataReferenceRecord {
  OSType dataRefType;
  Handle dataRef;
};

/// One property to open a movie with; the status is filled in.
struct QTNewMoviePropertyElement {
  OSType propClass;
  OSType propID;
  Size propValueSize;
  void* propValueAddress;
  OSStatus propStatus;
};

inline constexpr UInt32 kQTDontUseDataToFindImporter = 1;

/// Tells whether the file of a data reference can be opened with a graphics importer, as a movie,
/// and whether the importer is preferred; each output may be null. Movies are QuickTime and ISO
/// files; PNG and JPEG files open both ways, the importer preferred. With flag 1 the name's
/// extension decides (mov, qt, moov, mp4, m4v, m4a, m4b, m4p, mpg4, mqv, 3gp, 3gpp, 3g2, 3gp2; png,
/// jpg, jpeg, jpe, jfif; in any case), then the Finder type; the content is read only when the name
/// has no extension and the type tells nothing. A file of an unknown kind, or a folder, gives
/// status 0 and three false answers.
OSErr CanQuickTimeOpenDataRef(Handle data_reference, OSType type, Boolean* can_open_with_importer,
                              Boolean* can_open_as_movie, Boolean* prefer_importer, UInt32 flags);

/// Opens a movie by its properties: `dloc`/`dref` (a DataReferenceRecord) says where it is,
/// `mprp`/`actv` (Boolean) if it is active, `ctxt`/`visu` where it is drawn. Stills (PNG, JPEG)
/// open as one-frame movies. `output_properties` is null, their count 0. On success the caller owns
/// `*movie`.
OSStatus NewMovieFromProperties(ItemCount input_count, QTNewMoviePropertyElement* input_properties,
                                ItemCount output_count,
                                QTNewMoviePropertyElement* output_properties, Movie* movie);
/// Frees a movie with its tracks and media; null is allowed.
void DisposeMovie(Movie movie);

// --- Movies --------------------------------------------------------------------------------------

TimeScale GetMovieTimeScale(Movie movie);
TimeValue GetMovieDuration(Movie movie);
/// The smallest rectangle that holds all enabled visual tracks, in the movie's matrix and by its
/// aperture mode.
void GetMovieBox(Movie movie, Rect* box);
Boolean GetMovieActive(Movie movie);
void SetMovieActive(Movie movie, Boolean active);
void SetMovieTimeValue(Movie movie, TimeValue time);
TimeValue GetMovieTime(Movie movie, void* time_record);
SInt32 GetMovieTrackCount(Movie movie);
/// The track at `index` from 1; null outside.
Track GetMovieIndTrack(Movie movie, SInt32 index);
/// What GetMovieIndTrackType's type is, one of the first two, and which tracks count.
inline constexpr SInt32 movieTrackMediaType = 1;
inline constexpr SInt32 movieTrackCharacteristic = 2;  ///< `eyes` is seen, `ears` is heard
inline constexpr SInt32 movieTrackEnabledOnly = 4;
/// The track at `index`, from 1, among those of a type; null outside, paramErr for other flags.
Track GetMovieIndTrackType(Movie movie, SInt32 index, OSType type, SInt32 flags);
/// Reads or sets a property of the movie: `visu`/`apmd` (OSType: `clas`, `clea`, `prod`, `enco`),
/// or reads `visu`/`hamd`, a Boolean: whether a visual track has aperture dimensions.
OSStatus QTSetMovieProperty(Movie movie, OSType property_class, OSType property_id, Size size,
                            const void* value);
OSStatus QTGetMovieProperty(Movie movie, OSType property_class, OSType property_id, Size size,
                            void* value, Size* size_used);

// --- Tracks and media ----------------------------------------------------------------------------

/// A new enabled track, its size in 16.16 pixels, identity matrix, layer 0, `volume` 0 to 256. Null
/// on failure.
Track NewMovieTrack(Movie movie, Fixed width, Fixed height, SInt16 volume);
void DisposeMovieTrack(Track track);
/// A new media for a track that has none, its samples in the data of the reference (a null handle:
/// the movie's own file). The reference is copied. Null on failure.
Media NewTrackMedia(Track track, OSType media_type, TimeScale time_scale, Handle data_reference,
                    OSType reference_type);
Media GetTrackMedia(Track track);
/// What a track or a media belongs to; null for null.
Movie GetTrackMovie(Track track);
Track GetMediaTrack(Media media);
SInt32 GetTrackID(Track track);
SInt16 GetTrackLayer(Track track);
void SetTrackLayer(Track track, SInt16 layer);
Boolean GetTrackEnabled(Track track);
void SetTrackEnabled(Track track, Boolean enabled);
void GetTrackDimensions(Track track, Fixed* width, Fixed* height);
void GetTrackMatrix(Track track, MatrixRecord* matrix);
TimeValue GetTrackDuration(Track track);
TimeValue GetTrackOffset(Track track);
TimeScale GetMediaTimeScale(Media media);
TimeValue GetMediaDuration(Media media);
/// Media type, creator of its name, and manufacturer; each output may be null. `name` is a C string
/// of at most 255 characters.
void GetMediaHandlerDescription(Media media, OSType* type, char* name, OSType* manufacturer);
MediaHandler GetMediaHandler(Media media);
OSErr MediaSetGraphicsMode(MediaHandler handler, SInt32 mode, const RGBColor* op_color);
OSErr MediaGetGraphicsMode(MediaHandler handler, SInt32* mode, RGBColor* op_color);
inline constexpr SInt32 graphicsModeStraightAlpha = 256;

/// Adds an edit that plays `media_duration` of the media from `media_time` at `track_start`, -1
/// being the track's end.
OSErr InsertMediaIntoTrack(Track track, TimeValue track_start, TimeValue media_time,
                           TimeValue media_duration, Fixed media_rate);

// --- Data references -----------------------------------------------------------------------------

/// A data reference (type `alis`) to a file of that name in a folder, which need not exist.
OSErr QTNewDataReferenceFromFSRefCFString(const FSRef* folder, CFStringRef name, UInt32 flags,
                                          Handle* data_reference, OSType* type);

// --- Flattening ----------------------------------------------------------------------------------

enum : SInt16 { movieProgressOpen = 0, movieProgressUpdatePercent = 1, movieProgressClose = 2 };
enum : SInt16 { progressOpFlatten = 1 };
/// `percent` is 16.16 from 0 to 1. A result other than 0 ends the operation with that status.
using MovieProgressProcPtr = OSErr (*)(Movie movie, SInt16 message, SInt16 operation, Fixed percent,
                                       SInt64 reference_constant);
void SetMovieProgressProc(Movie movie, MovieProgressProcPtr procedure, SInt64 reference_constant);

inline constexpr SInt32 flattenAddMovieToDataFork = 1;
inline constexpr UInt32 createMovieFileDeleteCurFile = 0x80000000U;
inline constexpr UInt32 createMovieFileDontCreateMovie = 0x40000000U;

/// Writes the movie as one self-contained QuickTime file: all tracks, enabled or not, as they are,
/// media data in playback order. The file appears under its final name when it is complete;
/// whatever fails, no part of it is left. An older file of that name goes, once all sources are
/// open and the output is planned, if the creation flags say so; else dupFNErr. A file that holds
/// data of this movie is never replaced (dupFNErr), nor one that is protected (fBsyErr, see
/// replacement_guard.h). couldNotResolveDataRef when a sample's file can't be found within reach
/// (data_references.h), eofErr when a chunk does not lie within its file, dskFulErr when the disk
/// is full, invalidMovie when data is named by its place from outside the chunk tables, and what
/// the progress procedure returns. The status is in GetMoviesError. Returns the new movie, opened,
/// unless createMovieFileDontCreateMovie is given; then null.
Movie FlattenMovieDataToDataRef(Movie movie, SInt32 flatten_flags, Handle data_reference,
                                OSType type, OSType creator, ScriptCode script,
                                UInt32 creation_flags);

// --- Graphics importers --------------------------------------------------------------------------

/// An importer for a PNG or JPEG file, which the caller closes with CloseComponent; noMovieFound's
/// family of statuses for other kinds.
OSErr GetGraphicsImporterForDataRef(Handle data_reference, OSType type,
                                    GraphicsImportComponent* importer);
/// A new image description, owned by the caller.
OSErr GraphicsImportGetImageDescription(GraphicsImportComponent importer,
                                        ImageDescriptionHandle* description);
/// Where the compressed image lies in the file, in bytes.
OSErr GraphicsImportGetDataOffsetAndSize(GraphicsImportComponent importer, UInt32* offset,
                                         UInt32* size);
OSErr CloseComponent(GraphicsImportComponent importer);
