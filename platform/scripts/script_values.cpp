#include <lauxlib.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "cf_strings.h"
#include "descriptor_data.h"
#include "script_values_private.h"
#include "text_coercions.h"

namespace quillmere::scripts {
namespace {

constexpr int kDeepest = 64;
/// Keywords of a record, which are looked for one by one.
constexpr lua_Unsigned kLargestRecord = 4096;
/// The name of the metatable of descriptors that go through a script as they are.
constexpr const char* kOpaque = "descriptor";
constexpr OSType kMissingValue = "msng"_4cc;

bool IsOneOf(OSType type, std::initializer_list<OSType> types) {
  return std::ranges::find(types, type) != types.end();
}

/// The descriptor's value as `Value`, coerced to `type`.
template <class Value>
Value ValueOf(lua_State* lua, const AEDesc& descriptor, OSType type) {
  Value value{};
  OwnedDescriptor coerced;
  if (AECoerceDesc(&descriptor, type, coerced.get()) != noErr ||
      AEGetDescDataSize(coerced.get()) != sizeof value) {
    luaL_error(lua, "a descriptor holds no proper number");
  }
  AEGetDescData(coerced.get(), &value, sizeof value);
  return value;
}

std::string BytesOf(const AEDesc& descriptor) {
  std::string bytes(static_cast<std::size_t>(AEGetDescDataSize(&descriptor)), '\0');
  if (!bytes.empty()) AEGetDescData(&descriptor, bytes.data(), static_cast<Size>(bytes.size()));
  return bytes;
}

void PushBytes(lua_State* lua, std::string_view bytes) {
  lua_pushlstring(lua, bytes.data(), bytes.size());
}

void PushText(lua_State* lua, const AEDesc& descriptor) {
  // Plain bytes pass as they are: a script's own text is UTF-8.
  if (IsOneOf(descriptor.descriptorType, {typeText, typeUTF8Text})) {
    return PushBytes(lua, BytesOf(descriptor));
  }
  OwnedDescriptor text;
  if (AECoerceDesc(&descriptor, typeUTF8Text, text.get()) != noErr) {
    luaL_error(lua, "a descriptor holds no proper text");
  }
  PushBytes(lua, BytesOf(*text.get()));
}

/// The characters of a code in order.
std::string LettersOf(OSType code) {
  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8)
    letters += static_cast<char>((code >> shift) & 0xFF);
  return letters;
}

void PushCode(lua_State* lua, const AEDesc& descriptor) {
  const auto code = ValueOf<OSType>(lua, descriptor, descriptor.descriptorType);
  if (descriptor.descriptorType == typeType && code == kMissingValue) return lua_pushnil(lua);
  PushBytes(lua, LettersOf(code));
}

int DisposeOpaque(lua_State* lua) {
  AEDisposeDesc(static_cast<AEDesc*>(lua_touserdata(lua, 1)));
  return 0;
}

void PushOpaque(lua_State* lua, const AEDesc& descriptor) {
  auto* const held = static_cast<AEDesc*>(lua_newuserdatauv(lua, sizeof(AEDesc), 0));
  AEInitializeDesc(held);
  if (luaL_newmetatable(lua, kOpaque)) {
    lua_pushcfunction(lua, &DisposeOpaque);
    lua_setfield(lua, -2, "__gc");
    lua_pushboolean(lua, 0);
    lua_setfield(lua, -2, "__metatable");
  }
  lua_setmetatable(lua, -2);
  AEDuplicateDesc(&descriptor, held);
}

void Push(lua_State* lua, const AEDesc& descriptor, int depth);

void PushTable(lua_State* lua, const AEDesc& descriptor, int depth) {
  if (depth >= kDeepest) luaL_error(lua, "a list is nested too deep");
  luaL_checkstack(lua, 8, "a list is nested too deep");
  const bool is_list = descriptor.descriptorType == typeAEList;
  SInt32 count = 0;
  AECountItems(&descriptor, &count);
  lua_createtable(lua, is_list ? count : 0, is_list ? 0 : count);
  for (SInt32 index = 1; index <= count; ++index) {
    OwnedDescriptor item;
    AEKeyword keyword = 0;
    AEGetNthDesc(&descriptor, index, typeWildCard, &keyword, item.get());
    if (is_list) {
      Push(lua, *item.get(), depth + 1);
      lua_rawseti(lua, -2, index);
    } else {
      std::string key = LettersOf(keyword);
      key.resize(std::min(key.find_last_not_of(' ') + 1, key.size()));
      PushBytes(lua, key);
      Push(lua, *item.get(), depth + 1);
      lua_rawset(lua, -3);
    }
  }
}

void Push(lua_State* lua, const AEDesc& descriptor, int depth) {
  const OSType type = descriptor.descriptorType;
  if (type == typeNull) {
    lua_pushnil(lua);
  } else if (events::IsText(type)) {
    PushText(lua, descriptor);
  } else if (IsOneOf(type, {typeSInt16, typeSInt32, typeUInt32, typeSInt64})) {
    lua_pushinteger(lua, ValueOf<SInt64>(lua, descriptor, typeSInt64));
  } else if (IsOneOf(type, {typeIEEE32BitFloatingPoint, typeIEEE64BitFloatingPoint})) {
    lua_pushnumber(lua, ValueOf<double>(lua, descriptor, typeIEEE64BitFloatingPoint));
  } else if (IsOneOf(type, {typeBoolean, typeTrue, typeFalse})) {
    lua_pushboolean(lua, ValueOf<UInt8>(lua, descriptor, typeBoolean));
  } else if (IsOneOf(type, {typeType, typeEnumerated})) {
    PushCode(lua, descriptor);
  } else if (IsOneOf(type, {typeAEList, typeAERecord})) {
    PushTable(lua, descriptor, depth);
  } else {
    PushOpaque(lua, descriptor);
  }
}

/// Makes the descriptor of a value, table by table.
class Reader {
 public:
  Reader(lua_State* lua, Size largest) : lua_(lua), bytes_left_(largest) {}

  OSErr Read(int index, int depth, AEDesc* descriptor);

 private:
  enum class Shape { kList, kRecord, kNeither };

  OSErr ReadText(int index, AEDesc* descriptor);
  OSErr ReadWhole(SInt64 value, AEDesc* descriptor);
  OSErr ReadTable(int index, int depth, AEDesc* descriptor);
  Shape ShapeOf(int index);
  bool Take(std::size_t bytes);

  lua_State* lua_;
  Size bytes_left_;
};

bool Reader::Take(std::size_t bytes) {
  // What a descriptor takes beside its bytes.
  constexpr Size kOverhead = 64;
  bytes_left_ -= static_cast<Size>(bytes) + kOverhead;
  return bytes_left_ >= 0;
}

OSErr Reader::ReadText(int index, AEDesc* descriptor) {
  std::size_t length = 0;
  const char* const bytes = lua_tolstring(lua_, index, &length);
  if (!Take(length)) return static_cast<OSErr>(memFullErr);
  const Owned<CFStringRef> string(
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes),
                              static_cast<CFIndex>(length), kCFStringEncodingUTF8, 0));
  return AECreateDesc(string ? typeUTF8Text : typeText, bytes, static_cast<Size>(length),
                      descriptor);
}

OSErr Reader::ReadWhole(SInt64 value, AEDesc* descriptor) {
  const auto narrow = static_cast<SInt32>(value);
  if (narrow != value) return AECreateDesc(typeSInt64, &value, sizeof value, descriptor);
  return AECreateDesc(typeSInt32, &narrow, sizeof narrow, descriptor);
}

Reader::Shape Reader::ShapeOf(int index) {
  const lua_Unsigned length = lua_rawlen(lua_, index);
  lua_Unsigned count = 0;
  bool is_list = true;
  bool is_record = true;
  lua_pushnil(lua_);
  while (lua_next(lua_, index)) {
    lua_pop(lua_, 1);
    ++count;
    const bool is_index = lua_isinteger(lua_, -1) && lua_tointeger(lua_, -1) >= 1 &&
                          static_cast<lua_Unsigned>(lua_tointeger(lua_, -1)) <= length;
    const bool is_key =
        lua_type(lua_, -1) == LUA_TSTRING && lua_rawlen(lua_, -1) >= 1 && lua_rawlen(lua_, -1) <= 4;
    is_list = is_list && is_index;
    is_record = is_record && is_key;
  }
  if (is_list && count == length) return Shape::kList;
  return is_record && count <= kLargestRecord ? Shape::kRecord : Shape::kNeither;
}

OSErr Reader::ReadTable(int index, int depth, AEDesc* descriptor) {
  if (depth >= kDeepest || !lua_checkstack(lua_, 8)) return errAECoercionFail;
  const Shape shape = ShapeOf(index);
  if (shape == Shape::kNeither) return errAECoercionFail;
  OwnedDescriptor table;
  OSErr status = AECreateList(table.get(), shape == Shape::kRecord);
  if (shape == Shape::kList) {
    const auto count = static_cast<lua_Integer>(lua_rawlen(lua_, index));
    for (lua_Integer i = 1; i <= count && status == noErr; ++i) {
      OwnedDescriptor item;
      lua_rawgeti(lua_, index, i);
      status = Read(lua_gettop(lua_), depth + 1, item.get());
      if (status == noErr) events::Append(table.get(), std::move(item));
      lua_pop(lua_, 1);
    }
  } else {
    lua_pushnil(lua_);
    while (status == noErr && lua_next(lua_, index)) {
      OwnedDescriptor item;
      status = Read(lua_gettop(lua_), depth + 1, item.get());
      lua_pop(lua_, 1);
      std::size_t length = 0;
      const char* const key = lua_tolstring(lua_, -1, &length);
      AEKeyword keyword = 0;
      for (std::size_t i = 0; i < 4; ++i)
        keyword = (keyword << 8) | (i < length ? static_cast<UInt8>(key[i]) : ' ');
      if (status == noErr) events::Put(table.get(), keyword, std::move(item));
    }
  }
  if (status == noErr) *descriptor = table.release();
  return status;
}

OSErr Reader::Read(int index, int depth, AEDesc* descriptor) {
  if (!Take(0)) return static_cast<OSErr>(memFullErr);
  switch (lua_type(lua_, index)) {
    case LUA_TNIL:
      AEInitializeDesc(descriptor);
      return noErr;
    case LUA_TBOOLEAN: {
      const auto truth = static_cast<UInt8>(lua_toboolean(lua_, index));
      return AECreateDesc(typeBoolean, &truth, sizeof truth, descriptor);
    }
    case LUA_TNUMBER: {
      if (lua_isinteger(lua_, index)) return ReadWhole(lua_tointeger(lua_, index), descriptor);
      const double real = lua_tonumber(lua_, index);
      return AECreateDesc(typeIEEE64BitFloatingPoint, &real, sizeof real, descriptor);
    }
    case LUA_TSTRING:
      return ReadText(index, descriptor);
    case LUA_TTABLE:
      return ReadTable(index, depth, descriptor);
    default:
      if (const void* held = luaL_testudata(lua_, index, kOpaque)) {
        const auto* const opaque = static_cast<const AEDesc*>(held);
        if (!Take(static_cast<std::size_t>(AEGetDescDataSize(opaque)))) {
          return static_cast<OSErr>(memFullErr);
        }
        return AEDuplicateDesc(opaque, descriptor);
      }
      return errAECoercionFail;
  }
}

}  // namespace

void PushDescriptor(lua_State* lua, const AEDesc& descriptor) {
  Push(lua, descriptor, 0);
}

OSErr DescriptorOf(lua_State* lua, int index, Size largest, AEDesc* descriptor) {
  return Reader(lua, largest).Read(index, 0, descriptor);
}

}  // namespace quillmere::scripts
