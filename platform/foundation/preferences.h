/// The application's preferences: values by key, kept from run to run.
///
/// They lie as an XML property list in `$XDG_CONFIG_HOME/quillmere/preferences.plist`
/// (`~/.config` where that variable is not set or not absolute). Values that are set are held in
/// memory until CFPreferencesAppSynchronize, which reads the file again, changes the keys that were
/// set or removed here and no others, and replaces the file as a whole; a lock keeps two processes
/// from doing so at once. All calls may be made from any thread.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "property_lists.h"

/// The application whose preferences these are; there are no others.
extern const CFStringRef kCFPreferencesCurrentApplication;

/// Holds a copy of `value` under `key`; null removes the key. A value that has no form as a
/// property list is held too, but cannot be stored.
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application);
/// The value under `key`: what was set last, else what the file held when it was last read. The
/// caller owns it; null if there is none.
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application);
/// Writes what was set since the last time, and takes over what others have written. False if that
/// fails, or for values that cannot be stored; what was not written is still held. A file that is
/// damaged or too large stays as it is.
Boolean CFPreferencesAppSynchronize(CFStringRef application);
