/// Descriptors and events from a format and its arguments.
///
/// A format holds, with blanks anywhere between:
///
///     object   list, record, typed, value or ( value )
///     list     [ object, object, ... ]
///     record   { KEY : object, KEY : object, ... }
///     typed    TYPE ( value )    a value of that type
///              TYPE { ... }      a record of that type
///     value    -123            `long`, or `comp` where 32 bits do not hold it
///              NAME            `enum`
///              “text”          `TEXT`, between curly quotes in UTF-8 or MacRoman
///              «00FF» or $00FF$  bytes in hexadecimal digits; must be typed
///              @               the next argument, a `const AEDesc*`, copied; typed, see below
///              @@              the bytes of the next argument, a Handle; must be typed
///
/// TYPE, KEY and NAME are four-character codes: up to four letters, digits and other signs that
/// have no meaning of their own, not beginning with a digit, or any characters in single quotes;
/// shorter ones are filled with spaces. A typed whole number is coerced to the type; a typed name
/// gives its four bytes.
///
/// A typed @ takes from the arguments: `shor` and `bool` an int, `long` an SInt32, `magn` an
/// UInt32, `comp` an SInt64, `sing` and `doub` a double, `type` and `enum` an OSType, `TEXT` a
/// `const char*`; any other type a Size and a `const void*`, the count of bytes and the bytes.
#pragma once

#include <cstdarg>
#include <string_view>

#include "descriptors.h"

/// What was wrong with a format.
enum AEBuildErrorCode : UInt32 {
  aeBuildSyntaxNoErr = 0,
  aeBuildSyntaxBadToken = 1,            ///< a character that means nothing
  aeBuildSyntaxBadEOF = 2,              ///< the format ends too soon
  aeBuildSyntaxNoEOF = 3,               ///< something behind the end
  aeBuildSyntaxBadNegative = 4,         ///< a minus sign without a digit
  aeBuildSyntaxMissingQuote = 5,        ///< no closing single quote
  aeBuildSyntaxBadHex = 6,              ///< not a hexadecimal digit
  aeBuildSyntaxOddHex = 7,              ///< an odd number of digits
  aeBuildSyntaxNoCloseHex = 8,          ///< no end of the digits
  aeBuildSyntaxUncoercedHex = 9,        ///< bytes without a type
  aeBuildSyntaxNoCloseString = 10,      ///< no closing curly quote
  aeBuildSyntaxBadDesc = 11,            ///< no object where one is due, or nested too deep
  aeBuildSyntaxBadData = 12,            ///< no value within parentheses, or not of the type
  aeBuildSyntaxNoCloseParen = 13,       ///< no closing parenthesis
  aeBuildSyntaxNoCloseBracket = 14,     ///< neither comma nor closing bracket
  aeBuildSyntaxNoCloseBrace = 15,       ///< neither comma nor closing brace
  aeBuildSyntaxNoKey = 16,              ///< no keyword in a record
  aeBuildSyntaxNoColon = 17,            ///< no colon behind a keyword
  aeBuildSyntaxCoercedList = 18,        ///< a list with a type
  aeBuildSyntaxUncoercedDoubleAt = 19,  ///< @@ without a type
};

/// Where and what; both 0 when all is well.
struct AEBuildError {
  UInt32 fError;     ///< an AEBuildErrorCode
  UInt32 fErrorPos;  ///< the byte offset in the format
};

/// Builds the descriptor of a format, which the caller disposes of. `error` may be null. A format
/// that is not right gives paramErr and `*error`, a number that does not become its type
/// errAECoercionFail and aeBuildSyntaxBadData; a null descriptor comes out then.
OSStatus AEBuildDesc(AEDesc* result, AEBuildError* error, const char* format, ...);
OSStatus vAEBuildDesc(AEDesc* result, AEBuildError* error, const char* format, va_list arguments);
/// Builds an event of a class and ID, addressed to `address_type` with `address_size` bytes. The
/// format is that of its parameters: a record without braces, possibly empty.
OSStatus AEBuildAppleEvent(OSType event_class, OSType event_id, OSType address_type,
                           const void* address, Size address_size, SInt16 return_id,
                           SInt32 transaction_id, AppleEvent* result, AEBuildError* error,
                           const char* format, ...);
OSStatus vAEBuildAppleEvent(OSType event_class, OSType event_id, OSType address_type,
                            const void* address, Size address_size, SInt16 return_id,
                            SInt32 transaction_id, AppleEvent* result, AEBuildError* error,
                            const char* format, va_list arguments);

namespace quillmere::events {

/// Where the builder takes what the @ signs of a format stand for.
class BuildArguments {
 public:
  BuildArguments() = default;
  BuildArguments(const BuildArguments&) = delete;
  BuildArguments& operator=(const BuildArguments&) = delete;
  virtual ~BuildArguments() = default;

  /// Fills `descriptor` with a copy of the argument of an @ without a type.
  virtual OSErr TakeDescriptor(AEDesc* descriptor) = 0;
  /// Fills it with the argument of an @ with a type.
  virtual OSErr TakeTyped(OSType type, AEDesc* descriptor) = 0;
  /// Fills it with the bytes of the Handle of an @@.
  virtual OSErr TakeHandle(OSType type, AEDesc* descriptor) = 0;
};

/// Builds the descriptor of a format.
OSStatus BuildDescriptor(std::string_view format, BuildArguments* arguments, AEDesc* result,
                         AEBuildError* error);
/// Adds the parameters of a format without braces to a record.
OSStatus BuildParameters(std::string_view format, BuildArguments* arguments, AERecord* record,
                         AEBuildError* error);

}  // namespace quillmere::events
