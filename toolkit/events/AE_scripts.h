/// Running the scripts that lie in the application's bundle, in its folder "Scripts" with the
/// extension "scpt" (see docs/scripts.md).
///
/// Outputs named out... may be null where the text says so, and start as null descriptors or 0.
/// What a script tells of its errors goes to the caller in descriptors: `outError` takes a text,
/// and `outErrorNumber` a `shor`, both only when a script fails (errOSAScriptError) or when its
/// outcome cannot be had. The caller disposes of all descriptors that come out.
#pragma once

#include "cf_strings.h"
#include "descriptors.h"
#include "file_references.h"
#include "open_scripting.h"

/// Loads the script called `name` into a component of its own; the two belong together, and go with
/// AE_UnloadCompiledScript. GL_NoBundleErr without a bundle, fnfErr without such a script,
/// GL_NoFSRefErr for one that is not a file, QT_NoComponentFoundErr without a component, statuses
/// of reading and of OSALoad.
SInt32 AE_LoadCompiledScript(CFStringRef name, OSAID* outScriptID, ComponentInstance* outComponent);
/// Gives up a script and its component; nothing if one of them is 0.
void AE_UnloadCompiledScript(OSAID scriptID, ComponentInstance component);
/// Runs the script in a file once. All outputs are optional. The status is that of opening and
/// preparing (QT_NoComponentFoundErr, OSAMakeContext's); what the script comes to shows in
/// `outError` and `outErrorNumber` alone.
SInt32 AE_ExecuteScriptFile(const FSRef* file, AEDesc* outResult, AEDesc* outError,
                            AEDesc* outErrorNumber);
/// The same with a script of the bundle by its name; fnfErr, GL_NoBundleErr and GL_NoFSRefErr as
/// above.
SInt32 AE_LoadExecuteScript(CFStringRef name, AEDesc* outResult, AEDesc* outError,
                            AEDesc* outErrorNumber);
/// Calls a subroutine by its name (UTF-8) with the items of a list. The outputs are optional.
/// paramErr if another argument is null or 0, else the execution's status.
SInt32 AE_CallScriptSubroutine(ComponentInstance component, OSAID scriptID, const char* name,
                               const AEDescList* arguments, AEDesc* outResult, AEDesc* outError,
                               AEDesc* outErrorNumber);
/// The same without arguments and error outputs; `outResult` is optional.
SInt32 AE_RunNamedSubroutineNoParams(ComponentInstance component, OSAID scriptID, const char* name,
                                     AEDesc* outResult);
/// Takes the outcome of an execution with the status `code`: the component's error texts for
/// errOSAScriptError, for 0 the value `resultID`, which is given up. The outputs are optional, and
/// are filled without looking at what they were.
void AE_GetScrptResult(ComponentInstance component, OSAID resultID, SInt32 code, AEDesc* outResult,
                       AEDesc* outError, AEDesc* outErrorNumber);
