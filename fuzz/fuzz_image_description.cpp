// Image descriptions from any bytes: their extensions and properties are read, changed and read
// again; and the decoder's part of an esds.
#include <cstddef>
#include <cstdlib>

#include "QT_Ide_Descriptions.h"
#include "decoder_setup.h"
#include "memory_handles.h"
#include "reference_counted.h"

namespace {

void ReadAll(Handle description) {
  QT_Fiel fiel{};
  QT_Pasp pasp{};
  QT_Clap clap{};
  QT_Nclc nclc{};
  CFDataRef profile = nullptr;
  CGColorSpaceRef space = nullptr;
  float gamma = 0;
  SInt32 number = 0;
  Boolean has = 0;
  QT_GetFielFromImageDesc(description, &fiel);
  QT_GetPaspFromImageDesc(description, &pasp);
  QT_GetClapFromImageDesc(description, &clap);
  QT_GetNclcFromImageDesc(description, &nclc);
  QT_GetGammaFromImageDesc(description, &gamma);
  QT_GetIccProfileFromImageDesc(description, &profile);
  QT_CreateColorSpaceForImageDesc(description, &space);
  QT_GetImageDescRowbytes(description, &has, &number);
  QT_HasGamm22inNclc(description, &has);
  QT_CountImageDescExtTypes(description, &number);
  if (QT_EqualPasp(&pasp, &pasp) == 0 || QT_EqualClap(&clap, &clap) == 0) std::abort();
  CFRelease(profile);
  CFRelease(space);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, std::size_t size) {
  Handle description = nullptr;
  Handle copy = nullptr;
  if (PtrToHand(bytes, &description, static_cast<Size>(size)) != noErr) return 0;
  ReadAll(description);
  const std::span<const UInt8> setup = quillmere::movies::DecoderSetupOf({bytes, size});
  if (!setup.empty() && (setup.data() < bytes || setup.data() + setup.size() > bytes + size))
    std::abort();
  const QT_Clap clap = {1, 2, 3, 4, 5, 6, 7, 8};
  const QT_Nclc nclc = {kQT_NclcType, 1, 1, 1};
  if (QT_SetClapInImageDesc(description, &clap) == noErr) {
    QT_Clap back{};
    if (QT_GetClapFromImageDesc(description, &back) != noErr || !QT_EqualClap(&clap, &back))
      std::abort();
    QT_SetNclcInImageDesc(description, &nclc);
    ReadAll(description);
    if (QT_MakeYuv2ImageDescription(32, 32, &copy) == noErr)
      QT_CopyAllImageDescExts(description, copy, 1);
  }
  DisposeHandle(copy);
  DisposeHandle(description);
  return 0;
}
