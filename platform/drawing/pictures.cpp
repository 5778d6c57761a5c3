#include "pictures.h"

#include <memory>

#include "big_endian.h"
#include "picture_player_private.h"
#include "picture_recorder_private.h"
#include "ports_private.h"
#include "rectangles.h"

namespace {

using namespace quillmere::drawing;

std::span<const UInt8> BytesOf(PicHandle picture) {
  if (picture == nullptr || *picture == nullptr) return {};
  return {reinterpret_cast<const UInt8*>(*picture),
          static_cast<std::size_t>(GetHandleSize(picture))};
}

}  // namespace

PicHandle OpenCPicture(const OpenCPicParams* header) {
  GraphicsPort& port = CurrentPort();
  if (header == nullptr || EmptyRect(&header->srcRect) || header->hRes < 1 || header->vRes < 1)
    return nullptr;
  if (port.recorder) return nullptr;
  const PicHandle picture = NewHandle(0);
  if (picture != nullptr) port.recorder = std::make_unique<PictureRecorder>(*header, picture);
  return picture;
}

void ClosePicture() {
  GraphicsPort& port = CurrentPort();
  if (!port.recorder) return;
  port.recorder->Finish();
  port.recorder.reset();
}

void KillPicture(PicHandle picture) {
  DisposeHandle(picture);
}

void DrawPicture(PicHandle picture, const Rect* destination) {
  if (destination == nullptr) return;
  // Drawing may move handles.
  const std::span<const UInt8> bytes = BytesOf(picture);
  const std::vector<UInt8> copy(bytes.begin(), bytes.end());
  PlayPicture(copy.data(), copy.size(), *destination);
}

Rect* QDGetPictureBounds(PicHandle picture, Rect* frame) {
  if (frame == nullptr) return nullptr;
  PictureStart start;
  *frame = ReadPictureStart(BytesOf(picture), &start) ? start.frame : Rect{};
  return frame;
}

OSErr GetPictInfo(PicHandle picture, PictInfo* info) {
  if (picture == nullptr || info == nullptr) return paramErr;
  PictureStart start;
  if (!ReadPictureStart(BytesOf(picture), &start)) return pictureDataErr;
  *info = {start.source, start.h_resolution, start.v_resolution};
  return noErr;
}
