/// Nibs: user-interface files of the bundle, in Qt Designer's format, read at run time.
///
/// A nib "main" is the resource file "main.ui". Its window and menu bar are found by object name. A
/// widget is a control if it has the dynamic properties `signature` (four characters) and `number`;
/// a menu item with the dynamic property `command` (four characters) sends that command. Beside
/// Designer's own classes a nib may name `ImageView` and `StaticText` as promoted widgets. Main
/// thread only.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "cf_strings.h"

struct NibRecord;
using IBNibRef = NibRecord*;

inline constexpr OSStatus kIBCarbonRuntimeCantFindNibFile = -10960;
inline constexpr OSStatus kIBCarbonRuntimeObjectNotOfRequestedType = -10961;
inline constexpr OSStatus kIBCarbonRuntimeCantFindObject = -10962;

/// Opens a nib of the main bundle; the caller gives it up with DisposeNibReference.
/// kIBCarbonRuntimeCantFindNibFile if there is none or it is not well formed.
OSStatus CreateNibReference(CFStringRef name, IBNibRef* nib);
void DisposeNibReference(IBNibRef nib);
/// Makes the menu bar of that name the application's: windows made after this carry it.
OSStatus SetMenuBarFromNib(IBNibRef nib, CFStringRef name);
/// Makes a window, which is not shown yet. The caller disposes of it with DisposeWindow.
OSStatus CreateWindowFromNib(IBNibRef nib, CFStringRef name, WindowRef* window);
