/// Icon services: families of an icon's forms, and references to icons.
///
/// A family is a handle: the type `icns` and the size of all, then elements, each its type, its
/// size and its data; types and sizes are native 32-bit words, and sizes count their own header of
/// 8 bytes. Elements that are drawn are `PICT`, a picture, and `ic08`, 256 by 256 pixels of 32
/// bits, alpha first.
#pragma once

#include "graphics_ports.h"
#include "memory_handles.h"

using IconFamilyHandle = Handle;
inline constexpr OSType kIconFamilyType = "icns"_4cc;
inline constexpr OSErr noIconDataAvailableErr = -1002;
inline constexpr OSErr invalidIconRefErr = -2580;

/// A new family without an element, which the caller disposes of; null without memory.
IconFamilyHandle NewIconFamily();
/// Adds an element, or replaces the one of its type, by a copy of the data; null or no data takes
/// it away. paramErr for a handle that is no family.
OSErr SetIconFamilyData(IconFamilyHandle family, OSType element, Handle data);
/// Copies an element's data into a handle; noIconDataAvailableErr if there is none.
OSErr GetIconFamilyData(IconFamilyHandle family, OSType element, Handle data);

struct IconRecord;
using IconRef = IconRecord*;
/// A new reference to the icon of a copy of a family's bytes. paramErr, and null, for bytes that
/// are no family.
OSErr GetIconRefFromIconFamilyPtr(const void* family, Size size, IconRef* icon);
/// Ends a reference.
OSErr ReleaseIconRef(IconRef icon);
/// Draws an icon so that it fills a rectangle of the current port. noIconDataAvailableErr for one
/// without an element that is drawn.
OSErr PlotIconRef(const Rect* rect, IconRef icon);
