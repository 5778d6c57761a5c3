/// Metadata (metadata.h) and user data (user_data.h) of movies, tracks and media: read, set,
/// copied.
///
/// Buffers that an operation makes come from malloc and are the caller's; on failure they are null.
/// Statuses are those of the movie toolbox.
#pragma once

#include "base_types.h"
#include "metadata.h"
#include "movie_toolbox.h"

/// Copies all items, with their languages, behind those of another owner.
SInt32 QT_CopyMetaData(QTMetaDataRef source, QTMetaDataRef destination);
SInt32 QT_CopyMovieMetaData(Movie source, Movie destination);
SInt32 QT_CopyTrackMetaData(Track source, Track destination);
SInt32 QT_CopyMediaMetaData(Media source, Media destination);

/// What it is the metadata of (`moov`, `trak`, `mdia`), which one, and the storage formats that
/// hold items, an array. Outputs may be null.
SInt32 QT_GetMetaDataProps(QTMetaDataRef metadata, OSType* ownerType, UInt32* owner,
                           OSType** formats, SInt32* formatCount);
/// The key of an item, or its value with its data type.
SInt32 QT_GetMetaDataItemKey(QTMetaDataRef metadata, QTMetaDataItem item, UInt8** key,
                             ByteCount* keySize);
SInt32 QT_GetMetaDataItemValue(QTMetaDataRef metadata, QTMetaDataItem item, UInt8** value,
                               ByteCount* valueSize, UInt32* dataType);
/// All of it: value, data type, storage format, key format and key.
SInt32 QT_GetMetaDataItemProps(QTMetaDataRef metadata, QTMetaDataItem item, UInt8** value,
                               ByteCount* valueSize, UInt32* dataType, OSType* storageFormat,
                               OSType* keyFormat, UInt8** key, ByteCount* keySize);
/// Gives an item the language of another one, if that has one.
SInt32 QT_CopyMetaDataItemLocale(QTMetaDataRef source, QTMetaDataItem sourceItem,
                                 QTMetaDataRef destination, QTMetaDataItem destinationItem);
/// The item at an index, from 1, among those with a key, in one storage format or, for 0, in all
/// one after the other; -2177 if there are fewer.
SInt32 QT_GetMetaDataIndexedItemWithKey(QTMetaDataRef metadata, SInt32 index, OSType storageFormat,
                                        OSType keyFormat, const UInt8* key, ByteCount keySize,
                                        QTMetaDataItem* item);
SInt32 QT_MetaDataSetItemValue(QTMetaDataRef metadata, QTMetaDataItem item, const UInt8* value,
                               ByteCount size);

/// The first user data item of a type, of the track at an index of the movie or of a track, into a
/// handle of the caller's. Without a track the first form does nothing, with status 0, and the
/// second gives -50.
SInt32 QT_GetIndexedTrackFirstUserData(Movie movie, SInt32 index, OSType type, Handle data);
SInt32 QT_GetTrackFirstUserData(Track track, OSType type, Handle data);
/// Adds an item, or puts it in the place of the first of its type. -50 without a track or a handle.
SInt32 QT_AddUserDataToTrack(Track track, Handle data, OSType type, Boolean replace);
