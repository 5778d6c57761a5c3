/// Scripts: components that load scripts, run them and call their subroutines.
///
/// A script is the text of a Lua 5.4 program in UTF-8. It sees the basic functions and the
/// libraries string, table, math and utf8, but nothing that reaches files, other programs or the
/// loader, and `log_window_append(window, text)` (log_windows.h). See docs/scripts.md for what is
/// kept out and how scripts are written.
///
/// A script cannot run away: a call that executes more instructions, takes more processor time or
/// holds more memory than ScriptLimits allows ends as a script error.
///
/// Scripts, contexts (sets of global variables) and values have IDs within their component; 0 is
/// none. IDs of a component and the numbers of components are never used again. One thread at a
/// time uses one component, and a component takes no call while one of its scripts is running.
///
/// Statuses: badComponentInstance for a component that is not open; errOSAInvalidID for an ID of
/// nothing, or of something else than is asked for; errOSASystemError for a component that is
/// running; errOSAScriptError for a script that failed, of which OSAScriptError tells more;
/// paramErr for a null pointer. A result ID is 0 on failure.
///
/// Values. Text becomes a string in UTF-8, and a string `utf8`, or `TEXT` if it is not valid there.
/// Whole numbers become integers, and integers `long` or, beyond 32 bits, `comp`; reals become
/// floats, and floats `doub`; Booleans become and come from `bool`. Null and the missing value
/// become nil, and nil a null descriptor. A code (`type`, `enum`) becomes a string. A list becomes
/// a table from 1, and a record a table whose keys are its keywords without trailing spaces; a
/// table with exactly the keys 1 to n becomes a list, one whose keys all have 1 to 4 bytes a
/// record. Any other descriptor goes through a script as it is. Functions, other tables, cycles and
/// tables nested deeper than 64 give errAECoercionFail, values of more bytes than the memory limit
/// memFullErr.
#pragma once

#include "base_types.h"
#include "descriptors.h"
#include "file_references.h"

struct ComponentInstanceRecord;
using ComponentInstance = ComponentInstanceRecord*;
using OSAID = UInt32;
using OSAError = SInt32;

inline constexpr OSType kOSAComponentType = "osa "_4cc;
inline constexpr OSType kAppleScriptSubtype = "ascr"_4cc;  ///< of components, and a class of events
inline constexpr OSType kASSubroutineEvent = "psbr"_4cc;
inline constexpr AEKeyword keyASSubroutineName = "snam"_4cc;
inline constexpr OSAID kOSANullScript = 0;
inline constexpr SInt32 kOSAModeNull = 0;

inline constexpr OSErr invalidComponentID = -3000;
inline constexpr OSAError badComponentInstance = static_cast<OSAError>(0x80008001);
inline constexpr OSAError errOSASystemError = -1750;
inline constexpr OSAError errOSAInvalidID = -1751;
inline constexpr OSAError errOSABadStorageType = -1752;
inline constexpr OSAError errOSAScriptError = -1753;
inline constexpr OSAError errOSABadSelector = -1754;
/// Numbers of script errors.
inline constexpr SInt32 errOSAGeneralError = -2700;  ///< an error that gives no number
inline constexpr SInt32 OSASyntaxError = -2740;

/// Opens a component of type `osa ` and subtype `ascr`; null for any other. The caller closes it.
ComponentInstance OpenDefaultComponent(OSType type, OSType subtype);
/// Closes a component with all that it holds. invalidComponentID if it is not open; the low 16 bits
/// of errOSASystemError while it is running.
OSErr CloseComponent(ComponentInstance component);

/// Takes in a script from a `scpt` descriptor. The script is compiled, but does not run yet.
/// errOSABadStorageType for another descriptor or a script that is not text. `mode` is 0.
OSAError OSALoad(ComponentInstance component, const AEDesc* script_data, SInt32 mode,
                 OSAID* script);
/// Calls a subroutine of a script by an event `ascr` `psbr`: `snam` is its name, and the items of
/// the list `----` are its arguments; its first result goes to `*result`. In a context where the
/// script has not run yet it first runs as a whole. `context` 0 is the script's own. A name of no
/// subroutine is a script error with number errAEEventNotHandled; an event of another kind gives
/// errAEEventNotHandled. `mode` is 0.
OSAError OSAExecuteEvent(ComponentInstance component, const AppleEvent* event, OSAID script,
                         OSAID context, SInt32 mode, OSAID* result);
/// Loads the script in a file and runs it once in a context; what it returns goes to `*result`.
/// Statuses of files pass through. `mode` is 0.
OSAError OSALoadExecuteFile(ComponentInstance component, const FSRef* file, OSAID context,
                            SInt32 mode, OSAID* result);
/// Makes a context. It sees, but does not change, the variables of the context `parent` if that is
/// not 0. `name` is not used and may be null.
OSAError OSAMakeContext(ComponentInstance component, const AEDesc* name, OSAID parent,
                        OSAID* context);
/// Tells of the component's last script error: `selector` keyErrorNumber or keyErrorString, coerced
/// to `type`. A script gives a number by `error{number = N, message = TEXT}`; other numbers are
/// OSASyntaxError, errAETimeout for one that ran too long, memFullErr for one that took too much
/// memory, and errOSAGeneralError. errOSABadSelector for another selector, errOSASystemError when
/// there was no error.
OSAError OSAScriptError(ComponentInstance component, OSType selector, OSType type,
                        AEDesc* descriptor);
/// The descriptor of a value, coerced to `type`. `mode` is 0.
OSAError OSACoerceToDesc(ComponentInstance component, OSAID value, OSType type, SInt32 mode,
                         AEDesc* descriptor);
/// Gives up a script, context or value; nothing for 0.
OSAError OSADispose(ComponentInstance component, OSAID id);

namespace quillmere::scripts {

/// What one call of a script may use.
struct ScriptLimits {
  SInt64 instructions = 50'000'000;
  Size memory = 32 << 20;         ///< bytes that its component holds in all
  double processor_seconds = 10;  ///< of the calling thread
};

/// The limits of the components that are opened from now on.
void SetScriptLimits(const ScriptLimits& limits);

}  // namespace quillmere::scripts
