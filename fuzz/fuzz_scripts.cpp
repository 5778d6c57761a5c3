// Formats of descriptors, and scripts: the first byte says which of the two the others are.
#include <cstddef>
#include <string_view>

#include "event_builder.h"
#include "open_scripting.h"

namespace {

using quillmere::OwnedDescriptor;

/// Gives every @ something small.
class SmallArguments final : public quillmere::events::BuildArguments {
 public:
  OSErr TakeDescriptor(AEDesc* descriptor) override { return AECreateList(descriptor); }
  OSErr TakeTyped(OSType type, AEDesc* descriptor) override {
    return AECreateDesc(type, "12", 2, descriptor);
  }
  OSErr TakeHandle(OSType type, AEDesc* descriptor) override {
    return AECreateDesc(type, nullptr, 0, descriptor);
  }
};

void BuildAndCoerce(std::string_view format) {
  constexpr OSType kTypes[] = {"long"_4cc, "utf8"_4cc, "ut16"_4cc, "doub"_4cc, "list"_4cc};
  SmallArguments arguments;
  OwnedDescriptor built;
  AEBuildError error{};
  if (quillmere::events::BuildDescriptor(format, &arguments, built.get(), &error) != noErr) return;
  for (const OSType type : kTypes) {
    OwnedDescriptor coerced;
    AECoerceDesc(built.get(), type, coerced.get());
  }
}

void RunScript(std::string_view source) {
  quillmere::scripts::SetScriptLimits(
      {.instructions = 20'000, .memory = 2 << 20, .processor_seconds = 1});
  auto* const component = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
  OwnedDescriptor data;
  OwnedDescriptor event;
  OSAID script = 0;
  OSAID value = 0;
  AECreateDesc(typeScript, source.data(), static_cast<Size>(source.size()), data.get());
  if (OSALoad(component, data.get(), kOSAModeNull, &script) == noErr) {
    AEBuildAppleEvent(kAppleScriptSubtype, kASSubroutineEvent, typeProcessSerialNumber, "", 0, -1,
                      0, event.get(), nullptr, "'----':[1,TEXT(@),{key:2}],snam:TEXT(@)", "text",
                      "f");
    if (OSAExecuteEvent(component, event.get(), script, 0, kOSAModeNull, &value) == noErr) {
      OwnedDescriptor result;
      OSACoerceToDesc(component, value, typeWildCard, kOSAModeNull, result.get());
    }
  }
  CloseComponent(component);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  if (data[0] % 2 == 0) {
    BuildAndCoerce(text);
  } else {
    RunScript(text);
  }
  return 0;
}
