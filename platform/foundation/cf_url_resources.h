/// Reading and writing what a URL names at once.
#pragma once

#include "base_types.h"
#include "cf_urls.h"
#include "cf_values.h"

/// Reads a file whole, at most 256 MiB, into `data`, which the caller owns; null after a failure.
/// `properties` and `desired` are null: no properties are read. `status` (may be null) takes a
/// status of the files family, paramErr for a null URL or what is no regular file, memFullErr for a
/// longer file. False after a failure.
Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef allocator, CFURLRef url,
                                                 CFDataRef* data, CFDictionaryRef* properties,
                                                 CFArrayRef desired, SInt32* status);
/// Gives a file this content. After a failure the file is as it was, and no other content than the
/// old or the new is ever seen under its name. `properties` is null. `status` (may be null) takes a
/// status of the files family, paramErr for a null URL or data. False after a failure.
Boolean CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef data,
                                              CFDictionaryRef properties, SInt32* status);
