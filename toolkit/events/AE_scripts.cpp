#include "AE_scripts.h"

#include <array>
#include <cstdio>

#include "AE_basic.h"
#include "GL_Errors.h"
#include "GL_File_Data.h"
#include "GL_Memory.h"
#include "QT_Error_Keys.h"
#include "cf_bundle.h"
#include "reference_counted.h"

namespace {

using quillmere::AtExit;
using quillmere::Owned;
using quillmere::OwnedDescriptor;

constexpr OSType kTextType = "TEXT"_4cc;

void ClearOutputs(AEDesc* result, AEDesc* error, AEDesc* error_number) {
  for (AEDesc* const output : {result, error, error_number})
    AEInitializeDesc(output);
}

/// Puts the text of a failure with a status into an optional error descriptor, in the place of what
/// it holds.
void TellError(const char* format_of_status, SInt32 status, AEDesc* error) {
  if (error == nullptr) return;
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), format_of_status, static_cast<long>(status));
  AE_DisposeDesc(error);
  AE_CStringToDescAsUTF8(text.data(), error);
}

SInt32 FindScript(CFStringRef name, FSRef* file) {
  const CFBundleRef bundle = CFBundleGetMainBundle();
  if (bundle == nullptr) return GL_NoBundleErr;
  const Owned<CFURLRef> url(CFBundleCopyResourceURL(bundle, name, CFSTR("scpt"), CFSTR("Scripts")));
  if (!url) return fnfErr;
  return CFURLGetFSRef(url.get(), file) ? SInt32{noErr} : GL_NoFSRefErr;
}

/// Reads a script into a descriptor for OSALoad.
SInt32 ReadScript(const FSRef& file, AEDesc* script_data) {
  void* bytes = nullptr;
  UInt32 size = 0;
  SInt32 status = GL_ReadAllDataFromDataFork(0, &file, &bytes, &size);
  if (status == noErr) status = AECreateDesc(typeScript, bytes, Size{size}, script_data);
  GL_DisposePtr(&bytes);
  return status;
}

ComponentInstance OpenComponent() {
  return OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
}

/// Builds the event that calls a subroutine.
SInt32 BuildSubroutineEvent(const char* name, const AEDescList* arguments, AppleEvent* event,
                            AEDesc* error) {
  constexpr UInt32 kCurrentProcess[] = {0, 2};
  AEBuildError build_error{};
  SInt32 status = AEBuildAppleEvent(
      kAppleScriptSubtype, kASSubroutineEvent, typeProcessSerialNumber, kCurrentProcess,
      sizeof kCurrentProcess, kAutoGenerateReturnID, kAnyTransactionID, event, &build_error,
      "'----':@,'snam':TEXT(@)", arguments, name);
  if (status == noErr) status = static_cast<SInt32>(build_error.fError);
  if (status != noErr && error != nullptr) AE_BuildErrorToAEDesc(&build_error, error);
  return status;
}

}  // namespace

SInt32 AE_LoadCompiledScript(CFStringRef name, OSAID* outScriptID,
                             ComponentInstance* outComponent) {
  if (outScriptID == nullptr || outComponent == nullptr) return paramErr;
  *outScriptID = kOSANullScript;
  *outComponent = nullptr;
  FSRef file{};
  OwnedDescriptor script_data;
  SInt32 status = FindScript(name, &file);
  if (status == noErr) status = ReadScript(file, script_data.get());
  if (status != noErr) return status;
  auto* const component = OpenComponent();
  if (component == nullptr) return QT_NoComponentFoundErr;
  status = OSALoad(component, script_data.get(), kOSAModeNull, outScriptID);
  if (status != noErr) {
    CloseComponent(component);
    return status;
  }
  *outComponent = component;
  return noErr;
}

void AE_UnloadCompiledScript(OSAID scriptID, ComponentInstance component) {
  if (scriptID == kOSANullScript || component == nullptr) return;
  OSADispose(component, scriptID);
  CloseComponent(component);
}

SInt32 AE_ExecuteScriptFile(const FSRef* file, AEDesc* outResult, AEDesc* outError,
                            AEDesc* outErrorNumber) {
  ClearOutputs(outResult, outError, outErrorNumber);
  auto* const component = OpenComponent();
  if (component == nullptr) return QT_NoComponentFoundErr;
  const AtExit close([component] { CloseComponent(component); });
  OSAID context = kOSANullScript;
  const SInt32 status = OSAMakeContext(component, nullptr, kOSANullScript, &context);
  if (status != noErr) return status;
  OSAID result = kOSANullScript;
  const SInt32 code = OSALoadExecuteFile(component, file, context, kOSAModeNull, &result);
  AE_GetScrptResult(component, result, code, outResult, outError, outErrorNumber);
  return noErr;
}

SInt32 AE_LoadExecuteScript(CFStringRef name, AEDesc* outResult, AEDesc* outError,
                            AEDesc* outErrorNumber) {
  ClearOutputs(outResult, outError, outErrorNumber);
  FSRef file{};
  const SInt32 status = FindScript(name, &file);
  if (status != noErr) return status;
  return AE_ExecuteScriptFile(&file, outResult, outError, outErrorNumber);
}

SInt32 AE_CallScriptSubroutine(ComponentInstance component, OSAID scriptID, const char* name,
                               const AEDescList* arguments, AEDesc* outResult, AEDesc* outError,
                               AEDesc* outErrorNumber) {
  ClearOutputs(outResult, outError, outErrorNumber);
  if (component == nullptr || scriptID == kOSANullScript || name == nullptr ||
      arguments == nullptr) {
    return paramErr;
  }
  OwnedDescriptor event;
  const SInt32 status = BuildSubroutineEvent(name, arguments, event.get(), outError);
  if (status != noErr) return status;
  OSAID result = kOSANullScript;
  const SInt32 code =
      OSAExecuteEvent(component, event.get(), scriptID, kOSANullScript, kOSAModeNull, &result);
  AE_DisposeDesc(event.get());
  AE_GetScrptResult(component, result, code, outResult, outError, outErrorNumber);
  return code;
}

SInt32 AE_RunNamedSubroutineNoParams(ComponentInstance component, OSAID scriptID, const char* name,
                                     AEDesc* outResult) {
  AEInitializeDesc(outResult);
  OwnedDescriptor arguments;
  const SInt32 status = AEBuildDesc(arguments.get(), nullptr, "[]");
  if (status != noErr) return status;
  return AE_CallScriptSubroutine(component, scriptID, name, arguments.get(), outResult, nullptr,
                                 nullptr);
}

void AE_GetScrptResult(ComponentInstance component, OSAID resultID, SInt32 code, AEDesc* outResult,
                       AEDesc* outError, AEDesc* outErrorNumber) {
  ClearOutputs(outResult, outError, outErrorNumber);
  if (code == errOSAScriptError) {
    if (outError != nullptr) {
      const SInt32 status = OSAScriptError(component, keyErrorString, kTextType, outError);
      if (status != noErr) TellError("Error %ld getting script error mesage", status, outError);
    }
    if (outErrorNumber != nullptr) {
      const SInt32 status = OSAScriptError(component, keyErrorNumber, typeSInt16, outErrorNumber);
      if (status != noErr) TellError("Error %ld getting script error number", status, outError);
    }
  } else if (code == noErr) {
    if (outResult != nullptr) {
      const SInt32 status =
          OSACoerceToDesc(component, resultID, typeWildCard, kOSAModeNull, outResult);
      if (status != noErr) TellError("Error %ld coercing result", status, outError);
    }
    OSADispose(component, resultID);
  }
}
