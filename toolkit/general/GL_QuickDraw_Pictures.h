/// Shims over pictures (pictures.h) and the offscreen worlds that they are drawn in.
///
/// A new picture is the caller's. Statuses are those of worlds and of GetPictInfo; outputs then
/// stay as they were, and the current port is what it was, but for GL_PictureToPixmap. One thread
/// at a time uses a port.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "file_specifications.h"
#include "graphics_ports.h"
#include "pictures.h"
#include "window_ports.h"

/// Makes a world of the frame's size the port, so that a picture can be opened there, and fills the
/// header of that picture, 72 pixels an inch.
SInt32 GL_PrepareOpenPicture(GrafPtr* savedPort, const Rect* frame, OpenCPicParams* header,
                             GWorldPtr* world);
/// Closes the picture, makes the saved port current and ends the world, unless null.
void GL_ClosePicture(GrafPtr savedPort, GWorldPtr world);

/// A picture of a rectangle in one of the classic colours (GL_QuickDraw_Ports.h).
SInt32 GL_MakeOneColorPicture(SInt32 color, const Rect* rect, PicHandle* picture);
/// Draws a picture into a new world of its frame, the caller's, which stays the current port.
/// Nothing happens for null.
SInt32 GL_PictureToPixmap(PicHandle picture, GrafPtr* savedPort, GWorldPtr* world,
                          PixMapHandle* pixmap);
/// A picture with the frame `rect` in which the other one lies at its own frame.
SInt32 GL_ClipPicture(PicHandle picture, const Rect* rect, PicHandle* clipped);
/// Puts a new picture of the same frame and resolution, in which the old one is drawn, in its
/// place. Nothing happens for null.
SInt32 GL_EditPictureTempl(PicHandle* picture);
/// A picture scaled to a rectangle's size, its frame at the origin. With `keepAspect` it keeps its
/// proportions: with `fitBox` the frame shrinks to them, else bars in a basic colour
/// (CO_Basic_Colors.h) lie on both sides.
SInt32 GL_ScalePicture(const Rect* rect, PicHandle picture, PicHandle* scaled, Boolean keepAspect,
                       Boolean fitBox, SInt32 colorCode);

/// Draws into a picture; `frame` is its frame, the others are what GL_MakeTextPicture was given.
using GL_DrawTextProc = void (*)(Rect frame, void* a, void* b, void* c);
/// Records what a routine draws in a picture as large as a window's content and makes that the
/// window's, in place of one that it had.
SInt32 GL_MakeTextPicture(WindowRef window, GL_DrawTextProc draw, void* a, void* b, void* c);

/// The exporter of image files is not there.
inline constexpr SInt32 GL_NoExporterErr = -54532;
/// Writes a picture into a new image file of type `qtif`, in the folder that `spec` names and under
/// `name`, or the one in `spec` if that is null. dupFNErr for a name that is taken.
SInt32 QT_SavePictureToFile(PicHandle picture, const FSSpec* spec, const HFSUniStr255* name);
