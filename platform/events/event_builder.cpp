#include "event_builder.h"

#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <string>

#include "descriptor_data.h"
#include "memory_handles.h"
#include "text_coercions.h"

namespace quillmere::events {
namespace {

/// Objects within objects, at most.
constexpr int kDeepest = 64;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// A sign that opens or closes text or bytes, in UTF-8 or MacRoman.
struct Delimiter {
  std::string_view utf8;
  std::string_view roman;
};
constexpr Delimiter kOpenText = {"\xE2\x80\x9C", "\xD2"};
constexpr Delimiter kCloseText = {"\xE2\x80\x9D", "\xD3"};
constexpr Delimiter kOpenHex = {"\xC2\xAB", "\xC7"};
constexpr Delimiter kCloseHex = {"\xC2\xBB", "\xC8"};

/// Reads one format. The first error stays, and every step after it fails.
class Parser {
 public:
  Parser(std::string_view format, BuildArguments* arguments)
      : format_(format), arguments_(arguments) {}

  bool Object(AEDesc* result);
  /// Keywords and objects up to `close`, or to the end of the format for 0.
  bool Pairs(AERecord* record, char close);
  bool End();

  OSStatus status() const { return status_; }
  const AEBuildError& error() const { return error_; }

 private:
  bool Fail(UInt32 code, std::size_t position, OSStatus status = paramErr);
  /// `code` here, or that the format has ended where more is due.
  bool FailHere(UInt32 code) {
    return Fail(position_ < format_.size() ? code : UInt32{aeBuildSyntaxBadEOF}, position_);
  }
  bool Check(OSStatus status, UInt32 code, std::size_t position);

  void SkipBlanks();
  /// The next sign behind blanks, 0 at the end.
  char Peek();
  bool Accept(char sign);
  bool AcceptDelimiter(const Delimiter& delimiter);
  bool AtCode();
  bool Code(OSType* code);

  bool Typed(OSType type, AEDesc* result);
  bool List(AEDesc* result);
  bool Record(AEDesc* result);
  bool Value(std::optional<OSType> type, AEDesc* result);
  bool Argument(std::optional<OSType> type, AEDesc* result);
  bool WholeNumber(OSType type, AEDesc* result);
  bool Text(OSType type, AEDesc* result);
  bool Bytes(std::optional<OSType> type, std::string_view close_roman, AEDesc* result);

  std::string_view format_;
  BuildArguments* arguments_;
  std::size_t position_ = 0;
  int depth_ = 0;
  OSStatus status_ = noErr;
  AEBuildError error_ = {};
};

bool Parser::Fail(UInt32 code, std::size_t position, OSStatus status) {
  if (status_ == noErr) {
    status_ = status;
    error_ = {code, static_cast<UInt32>(position)};
  }
  return false;
}

bool Parser::Check(OSStatus status, UInt32 code, std::size_t position) {
  return status == noErr || Fail(code, position, status);
}

void Parser::SkipBlanks() {
  while (position_ < format_.size() &&
         std::string_view(" \t\r\n").find(format_[position_]) != std::string_view::npos) {
    ++position_;
  }
}

char Parser::Peek() {
  SkipBlanks();
  return position_ < format_.size() ? format_[position_] : '\0';
}

bool Parser::Accept(char sign) {
  if (Peek() != sign || position_ >= format_.size()) return false;
  ++position_;
  return true;
}

bool Parser::AcceptDelimiter(const Delimiter& delimiter) {
  const std::string_view rest = format_.substr(position_);
  for (const std::string_view form : {delimiter.utf8, delimiter.roman}) {
    if (rest.starts_with(form)) {
      position_ += form.size();
      return true;
    }
  }
  return false;
}

bool IsCodeSign(char c) {
  return c > ' ' && c < 0x7F && std::string_view("@:,()[]{}'$-~\"").find(c) == std::string::npos;
}

bool Parser::AtCode() {
  const char next = Peek();
  return next == '\'' || (IsCodeSign(next) && !IsDigit(next));
}

bool Parser::Code(OSType* code) {
  const std::size_t start = position_;
  std::string_view text;
  if (Accept('\'')) {
    const std::size_t close = format_.find('\'', position_);
    if (close == std::string_view::npos) return Fail(aeBuildSyntaxMissingQuote, start);
    text = format_.substr(position_, close - position_);
    position_ = close + 1;
  } else {
    while (position_ < format_.size() && IsCodeSign(format_[position_]))
      ++position_;
    text = format_.substr(start, position_ - start);
  }
  *code = 0;
  for (std::size_t i = 0; i < 4; ++i)
    *code = (*code << 8) | (i < text.size() ? static_cast<UInt8>(text[i]) : ' ');
  return true;
}

bool Parser::Object(AEDesc* result) {
  if (depth_ >= kDeepest) return Fail(aeBuildSyntaxBadDesc, position_);
  ++depth_;
  bool done = false;
  OSType code = 0;
  if (Accept('[')) {
    done = List(result);
  } else if (Accept('{')) {
    done = Record(result);
  } else if (Accept('(')) {
    done = Value({}, result) && (Accept(')') || Fail(aeBuildSyntaxNoCloseParen, position_));
  } else if (!AtCode()) {
    done = Value({}, result);
  } else if (const std::size_t start = position_; Code(&code)) {
    done = std::string_view("([{").find(Peek()) != std::string_view::npos && Peek() != '\0'
               ? Typed(code, result)
               : Check(AECreateDesc(typeEnumerated, &code, sizeof code, result),
                       aeBuildSyntaxBadDesc, start);
  }
  --depth_;
  return done;
}

bool Parser::Typed(OSType type, AEDesc* result) {
  const std::size_t start = position_;
  if (Accept('[')) return Fail(aeBuildSyntaxCoercedList, start);
  if (Accept('(')) {
    return Value(type, result) && (Accept(')') || Fail(aeBuildSyntaxNoCloseParen, position_));
  }
  Accept('{');
  OwnedDescriptor record;
  return Record(record.get()) &&
         Check(AECoerceDesc(record.get(), type, result), aeBuildSyntaxBadData, start);
}

bool Parser::List(AEDesc* result) {
  OwnedDescriptor list;
  AECreateList(list.get());
  if (!Accept(']')) {
    do {
      OwnedDescriptor item;
      if (!Object(item.get())) return false;
      Append(list.get(), std::move(item));
    } while (Accept(','));
    if (!Accept(']')) return Fail(aeBuildSyntaxNoCloseBracket, position_);
  }
  *result = list.release();
  return true;
}

bool Parser::Record(AEDesc* result) {
  OwnedDescriptor record;
  AECreateList(record.get(), true);
  if (!Pairs(record.get(), '}')) return false;
  *result = record.release();
  return true;
}

bool Parser::Pairs(AERecord* record, char close) {
  const auto at_close = [&] {
    return close != 0 ? Accept(close) : (SkipBlanks(), position_ == format_.size());
  };
  if (at_close()) return true;
  do {
    OSType key = 0;
    if (!AtCode()) return FailHere(aeBuildSyntaxNoKey);
    if (!Code(&key)) return false;
    if (!Accept(':')) return Fail(aeBuildSyntaxNoColon, position_);
    OwnedDescriptor value;
    if (!Object(value.get())) return false;
    Put(record, key, std::move(value));
  } while (Accept(','));
  return at_close() || Fail(close != 0 ? aeBuildSyntaxNoCloseBrace : aeBuildSyntaxNoEOF, position_);
}

bool Parser::Value(std::optional<OSType> type, AEDesc* result) {
  const char next = Peek();
  const std::size_t start = position_;
  if (next == '@') return Argument(type, result);
  if (next == '-' || IsDigit(next)) return WholeNumber(type.value_or(typeSInt32), result);
  if (AcceptDelimiter(kOpenText)) return Text(type.value_or(typeText), result);
  if (AcceptDelimiter(kOpenHex)) return Bytes(type, kCloseHex.roman, result);
  if (Accept('$')) return Bytes(type, "$", result);
  OSType code = 0;
  if (AtCode()) {
    return Code(&code) &&
           Check(AECreateDesc(type.value_or(typeEnumerated), &code, sizeof code, result),
                 aeBuildSyntaxBadData, start);
  }
  if (std::string_view(":,()[]{}").find(next) == std::string_view::npos) {
    return FailHere(aeBuildSyntaxBadToken);
  }
  return FailHere(type ? aeBuildSyntaxBadData : aeBuildSyntaxBadDesc);
}

bool Parser::Argument(std::optional<OSType> type, AEDesc* result) {
  const std::size_t start = position_++;
  if (position_ < format_.size() && format_[position_] == '@') {
    ++position_;
    if (!type) return Fail(aeBuildSyntaxUncoercedDoubleAt, start);
    return Check(arguments_->TakeHandle(*type, result), aeBuildSyntaxBadData, start);
  }
  const OSErr status =
      type ? arguments_->TakeTyped(*type, result) : arguments_->TakeDescriptor(result);
  return Check(status, aeBuildSyntaxBadData, start);
}

bool Parser::WholeNumber(OSType type, AEDesc* result) {
  const std::size_t start = position_;
  const char* const end = format_.data() + format_.size();
  SInt64 number = 0;
  if (format_[start] == '-' && (start + 1 == format_.size() || !IsDigit(format_[start + 1]))) {
    return Fail(aeBuildSyntaxBadNegative, start);
  }
  const auto read = std::from_chars(format_.data() + start, end, number);
  position_ = static_cast<std::size_t>(read.ptr - format_.data());
  if (read.ec != std::errc{}) return Fail(aeBuildSyntaxBadData, start);
  OwnedDescriptor wide;
  AECreateDesc(typeSInt64, &number, sizeof number, wide.get());
  OSErr status = AECoerceDesc(wide.get(), type, result);
  if (status == errAECoercionFail && type == typeSInt32) {
    status = AECoerceDesc(wide.get(), typeWildCard, result);
  }
  return Check(status, aeBuildSyntaxBadData, start);
}

bool Parser::Text(OSType type, AEDesc* result) {
  const std::size_t start = position_;
  while (position_ < format_.size()) {
    const std::size_t end = position_;
    if (AcceptDelimiter(kCloseText)) {
      return Check(
          AECreateDesc(type, format_.data() + start, static_cast<Size>(end - start), result),
          aeBuildSyntaxBadData, start);
    }
    ++position_;
  }
  return Fail(aeBuildSyntaxNoCloseString, position_);
}

bool Parser::Bytes(std::optional<OSType> type, std::string_view close_roman, AEDesc* result) {
  const std::size_t start = position_;
  const Delimiter close = {close_roman == "$" ? close_roman : kCloseHex.utf8, close_roman};
  std::string bytes;
  int high = -1;
  while (true) {
    if (Peek() == '\0' && position_ >= format_.size()) {
      return Fail(aeBuildSyntaxNoCloseHex, position_);
    }
    if (AcceptDelimiter(close)) break;
    const int digit = HexDigit(format_[position_]);
    if (digit < 0) return Fail(aeBuildSyntaxBadHex, position_);
    ++position_;
    if (high < 0) {
      high = digit;
    } else {
      bytes += static_cast<char>(high * 16 + digit);
      high = -1;
    }
  }
  if (high >= 0) return Fail(aeBuildSyntaxOddHex, start);
  if (!type) return Fail(aeBuildSyntaxUncoercedHex, start);
  return Check(AECreateDesc(*type, bytes.data(), static_cast<Size>(bytes.size()), result),
               aeBuildSyntaxBadData, start);
}

bool Parser::End() {
  SkipBlanks();
  return position_ == format_.size() || Fail(aeBuildSyntaxNoEOF, position_);
}

/// The arguments of a call with an ellipsis.
class EllipsisArguments final : public BuildArguments {
 public:
  explicit EllipsisArguments(va_list arguments) { va_copy(arguments_, arguments); }
  ~EllipsisArguments() override { va_end(arguments_); }

  OSErr TakeDescriptor(AEDesc* descriptor) override {
    return AEDuplicateDesc(va_arg(arguments_, const AEDesc*), descriptor);
  }

  OSErr TakeTyped(OSType type, AEDesc* descriptor) override {
    switch (type) {
      case typeSInt16:
        return Put(type, static_cast<SInt16>(va_arg(arguments_, int)), descriptor);
      case typeBoolean:
        return Put(type, static_cast<UInt8>(va_arg(arguments_, int) != 0), descriptor);
      case typeSInt32:
        return Put(type, va_arg(arguments_, SInt32), descriptor);
      case typeUInt32:
      case typeType:
      case typeEnumerated:
        return Put(type, va_arg(arguments_, UInt32), descriptor);
      case typeSInt64:
        return Put(type, va_arg(arguments_, SInt64), descriptor);
      case typeIEEE32BitFloatingPoint:
        return Put(type, static_cast<float>(va_arg(arguments_, double)), descriptor);
      case typeIEEE64BitFloatingPoint:
        return Put(type, va_arg(arguments_, double), descriptor);
      case typeText: {
        const char* const text = va_arg(arguments_, const char*);
        if (text == nullptr) return static_cast<OSErr>(paramErr);
        return AECreateDesc(type, text, static_cast<Size>(std::strlen(text)), descriptor);
      }
      default: {
        const Size size = va_arg(arguments_, Size);
        const void* const bytes = va_arg(arguments_, const void*);
        return AECreateDesc(type, bytes, size, descriptor);
      }
    }
  }

  OSErr TakeHandle(OSType type, AEDesc* descriptor) override {
    auto* const handle = va_arg(arguments_, Handle);
    if (handle == nullptr) return static_cast<OSErr>(nilHandleErr);
    return AECreateDesc(type, *handle, GetHandleSize(handle), descriptor);
  }

 private:
  template <class Value>
  static OSErr Put(OSType type, Value value, AEDesc* descriptor) {
    return AECreateDesc(type, &value, sizeof value, descriptor);
  }

  va_list arguments_;
};

OSStatus Finish(const Parser& parser, AEBuildError* error) {
  if (error != nullptr) *error = parser.error();
  return parser.status();
}

}  // namespace

OSStatus BuildDescriptor(std::string_view format, BuildArguments* arguments, AEDesc* result,
                         AEBuildError* error) {
  Parser parser(format, arguments);
  OwnedDescriptor built;
  const bool done = parser.Object(built.get()) && parser.End();
  AEInitializeDesc(result);
  if (done) *result = built.release();
  return Finish(parser, error);
}

OSStatus BuildParameters(std::string_view format, BuildArguments* arguments, AERecord* record,
                         AEBuildError* error) {
  Parser parser(format, arguments);
  parser.Pairs(record, 0);
  return Finish(parser, error);
}

}  // namespace quillmere::events

OSStatus vAEBuildDesc(AEDesc* result, AEBuildError* error, const char* format, va_list arguments) {
  if (error != nullptr) *error = {};
  if (result == nullptr || format == nullptr) return paramErr;
  quillmere::events::EllipsisArguments source(arguments);
  return quillmere::events::BuildDescriptor(format, &source, result, error);
}

OSStatus AEBuildDesc(AEDesc* result, AEBuildError* error, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const OSStatus status = vAEBuildDesc(result, error, format, arguments);
  va_end(arguments);
  return status;
}

OSStatus vAEBuildAppleEvent(OSType event_class, OSType event_id, OSType address_type,
                            const void* address, Size address_size, SInt16 return_id,
                            SInt32 transaction_id, AppleEvent* result, AEBuildError* error,
                            const char* format, va_list arguments) {
  if (error != nullptr) *error = {};
  if (result == nullptr || format == nullptr) return paramErr;
  AEInitializeDesc(result);
  quillmere::OwnedDescriptor target;
  quillmere::OwnedDescriptor event;
  OSStatus status = AECreateDesc(address_type, address, address_size, target.get());
  if (status == noErr) {
    status = AECreateAppleEvent(event_class, event_id, target.get(), return_id, transaction_id,
                                event.get());
  }
  if (status != noErr) return status;
  quillmere::events::EllipsisArguments source(arguments);
  status = quillmere::events::BuildParameters(format, &source, event.get(), error);
  if (status == noErr) *result = event.release();
  return status;
}

OSStatus AEBuildAppleEvent(OSType event_class, OSType event_id, OSType address_type,
                           const void* address, Size address_size, SInt16 return_id,
                           SInt32 transaction_id, AppleEvent* result, AEBuildError* error,
                           const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const OSStatus status =
      vAEBuildAppleEvent(event_class, event_id, address_type, address, address_size, return_id,
                         transaction_id, result, error, format, arguments);
  va_end(arguments);
  return status;
}
