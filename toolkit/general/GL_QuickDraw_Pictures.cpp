#include "GL_QuickDraw_Pictures.h"

#include <algorithm>

#include "CO_Basic_Colors.h"
#include "GL_File_Creation.h"
#include "GL_QuickDraw.h"
#include "GL_QuickDraw_Fit.h"
#include "GL_QuickDraw_Ports.h"
#include "GL_QuickDraw_deprecated.h"
#include "aliases.h"
#include "cf_strings.h"
#include "drawing.h"
#include "graphics_exporter.h"
#include "rectangles.h"

namespace {

constexpr SInt16 kHeaderVersion = -2;
constexpr OSType kNoCreator = "\?\?  "_4cc;

/// Records what `draw` draws in a world of the frame's size.
template <class Draw>
SInt32 Record(const Rect& frame, Fixed h_resolution, Fixed v_resolution, PicHandle* picture,
              Draw draw) {
  GrafPtr saved = nullptr;
  GWorldPtr world = nullptr;
  OpenCPicParams header;
  const SInt32 status = GL_PrepareOpenPicture(&saved, &frame, &header, &world);
  if (status) return status;
  header.hRes = h_resolution;
  header.vRes = v_resolution;
  const PicHandle made = QDD_OpenCPicture(&header);
  if (made != nullptr) draw();
  GL_ClosePicture(saved, world);
  if (made == nullptr) return memFullErr;
  if (GetHandleSize(made) == 0) {  // there was no memory for all of it
    KillPicture(made);
    return memFullErr;
  }
  *picture = made;
  return noErr;
}

/// The bars that a picture in the middle of a frame leaves free.
void PaintBars(const Rect& frame, const Rect& picture, bool is_beside, const RGBColor& color) {
  Rect first = frame;
  Rect second = frame;
  if (is_beside) {
    first.right = picture.left;
    second.left = picture.right;
  } else {
    first.bottom = picture.top;
    second.top = picture.bottom;
  }
  QDD_RGBForeColor(&color);
  QDD_PaintRect(&first);
  QDD_PaintRect(&second);
}

SInt32 Export(PicHandle picture, const FSRef& file) {
  GraphicsExportComponent exporter = nullptr;
  if (OpenADefaultComponent(kGraphicsExporterComponentType, kQTFileTypeQuickTimeImage, &exporter) !=
      noErr)
    return GL_NoExporterErr;
  AliasHandle alias = nullptr;
  SInt32 status = GraphicsExportSetInputPicture(exporter, picture);
  if (!status) status = GraphicsExportSetDontRecompress(exporter, 1);
  if (!status) status = FSNewAlias(nullptr, &file, &alias);
  if (!status) status = GraphicsExportSetOutputDataReference(exporter, alias, "alis"_4cc);
  if (!status) status = GraphicsExportDoExport(exporter, nullptr);
  DisposeHandle(alias);
  CloseComponent(exporter);
  return status;
}

HFSUniStr255 NameOf(const FSSpec& spec) {
  const quillmere::Owned<CFStringRef> string(CFStringCreateWithBytes(
      kCFAllocatorDefault, spec.name + 1, spec.name[0], kCFStringEncodingMacRoman, 0));
  const std::u16string_view units = quillmere::UnitsOf(string.get());
  HFSUniStr255 name{};
  name.length = static_cast<UInt16>(units.size());
  std::copy(units.begin(), units.end(), name.unicode);
  return name;
}

}  // namespace

SInt32 GL_PrepareOpenPicture(GrafPtr* savedPort, const Rect* frame, OpenCPicParams* header,
                             GWorldPtr* world) {
  GWorldPtr made = nullptr;
  const SInt32 status = QDD_NewGWorld(&made, 0, frame, nullptr, nullptr, kGWorldKeepLocal);
  if (status) return status;
  GetPort(savedPort);
  SetGWorld(made, nullptr);
  *header = {*frame, kPicture72Dpi, kPicture72Dpi, kHeaderVersion, 0, 0};
  *world = made;
  return noErr;
}

void GL_ClosePicture(GrafPtr savedPort, GWorldPtr world) {
  ClosePicture();
  SetPort(savedPort);
  DisposeGWorld(world);
}

SInt32 GL_MakeOneColorPicture(SInt32 color, const Rect* rect, PicHandle* picture) {
  return Record(*rect, kPicture72Dpi, kPicture72Dpi, picture, [&] { GL_PaintRect(rect, color); });
}

SInt32 GL_PictureToPixmap(PicHandle picture, GrafPtr* savedPort, GWorldPtr* world,
                          PixMapHandle* pixmap) {
  if (picture == nullptr) return noErr;
  PictInfo info;
  SInt32 status = QDD_GetPictInfo(picture, &info);
  GWorldPtr made = nullptr;
  if (!status)
    status = QDD_NewGWorld(&made, 0, &info.sourceRect, nullptr, nullptr, kGWorldKeepLocal);
  if (status) return status;
  GetPort(savedPort);
  SetGWorld(made, nullptr);
  QDD_DrawPicture(picture, &info.sourceRect);
  *world = made;
  *pixmap = GetGWorldPixMap(made);
  return noErr;
}

SInt32 GL_ClipPicture(PicHandle picture, const Rect* rect, PicHandle* clipped) {
  PictInfo info;
  const SInt32 status = QDD_GetPictInfo(picture, &info);
  if (status) return status;
  return Record(*rect, kPicture72Dpi, kPicture72Dpi, clipped, [&] {
    QDD_ClipRect(rect);
    QDD_DrawPicture(picture, &info.sourceRect);
  });
}

SInt32 GL_EditPictureTempl(PicHandle* picture) {
  if (picture == nullptr || *picture == nullptr) return noErr;
  PictInfo info;
  SInt32 status = QDD_GetPictInfo(*picture, &info);
  if (status) return status;
  PicHandle edited = nullptr;
  status = Record(info.sourceRect, info.hRes, info.vRes, &edited, [&] {
    RgnHandle clip = NewRgn();
    GetClip(clip);
    QDD_ClipRect(&info.sourceRect);
    QDD_DrawPicture(*picture, &info.sourceRect);
    SetClip(clip);
    DisposeRgn(clip);
  });
  if (status) return status;
  KillPicture(*picture);
  *picture = edited;
  return noErr;
}

SInt32 GL_ScalePicture(const Rect* rect, PicHandle picture, PicHandle* scaled, Boolean keepAspect,
                       Boolean fitBox, SInt32 colorCode) {
  PictInfo info;
  const SInt32 status = QDD_GetPictInfo(picture, &info);
  if (status) return status;
  const auto ratio = [](const Rect& of) {
    return static_cast<float>(of.right - of.left) / static_cast<float>(of.bottom - of.top);
  };
  Rect frame = *rect;
  GL_MoveRectTopLeftToOrigin(&frame);
  if (EmptyRect(&frame)) return paramErr;
  const float picture_ratio = ratio(info.sourceRect);
  const bool is_wider = ratio(frame) > picture_ratio;
  if (keepAspect && fitBox) {
    constexpr float kMargin = 0.01F;
    if (is_wider)
      frame.right = static_cast<SInt16>(static_cast<float>(frame.bottom) * picture_ratio + kMargin);
    else
      frame.bottom = static_cast<SInt16>(static_cast<float>(frame.right) / picture_ratio + kMargin);
  }
  return Record(frame, kPicture72Dpi, kPicture72Dpi, scaled, [&] {
    if (!keepAspect || fitBox) return QDD_DrawPicture(picture, &frame);
    Rect inner;
    GL_GetScaledPictureLetterbox(info.sourceRect.right - info.sourceRect.left,
                                 info.sourceRect.bottom - info.sourceRect.top, &frame, &inner);
    QDD_DrawPicture(picture, &inner);
    RGBColor color;
    CO_RGB_BasicColorToRGBColor(colorCode, &color);
    PaintBars(frame, inner, is_wider, color);
  });
}

SInt32 GL_MakeTextPicture(WindowRef window, GL_DrawTextProc draw, void* a, void* b, void* c) {
  CGrafPtr port = GetWindowPort(window);
  if (port == nullptr || draw == nullptr) return paramErr;
  Rect frame;
  GetPortBounds(port, &frame);
  PicHandle picture = nullptr;
  const SInt32 status =
      Record(frame, kPicture72Dpi, kPicture72Dpi, &picture, [&] { draw(frame, a, b, c); });
  if (status) return status;
  KillPicture(GetWindowPic(window));
  SetWindowPic(window, picture);
  return noErr;
}

SInt32 QT_SavePictureToFile(PicHandle picture, const FSSpec* spec, const HFSUniStr255* name) {
  if (picture == nullptr || spec == nullptr) return paramErr;
  FSRef folder{};
  SInt32 status = PBMakeFSRefSync(spec->vRefNum, spec->parID, nullptr, &folder);
  if (status) return status;
  const HFSUniStr255 file_name = name != nullptr ? *name : NameOf(*spec);
  FSRef file{};
  status = GL_CreateFile(&folder, &file_name, kNoCreator, kQTFileTypeQuickTimeImage, 0, &file);
  if (status) return status;
  status = Export(picture, file);
  if (status) GL_UnlinkObject(&file);  // no empty file stays
  return status;
}
