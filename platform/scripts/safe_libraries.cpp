// The libraries that a script sees. The instruction count does not see what a library function does
// within one call, so that those which can loop for long on small arguments are guarded here.
#include <lualib.h>

#include <string_view>

#include "log_windows.h"
#include "lua_sandbox_private.h"
#include "pattern_cost.h"

namespace quillmere::scripts {
namespace {

/// More elements than any table holds within the memory limit.
constexpr lua_Integer kMostElements = 1 << 24;

/// Calls the guarded function, upvalue 1, with the arguments.
int CallGuarded(lua_State* lua) {
  lua_pushvalue(lua, lua_upvalueindex(1));
  lua_insert(lua, 1);
  lua_call(lua, lua_gettop(lua) - 1, LUA_MULTRET);
  return lua_gettop(lua);
}

/// Refuses a table whose length is not that of its elements.
void CheckLength(lua_State* lua) {
  Sandbox::Of(lua).CheckTime(lua);
  if (lua_type(lua, 1) != LUA_TTABLE) return;  // the function itself complains
  if (luaL_getmetafield(lua, 1, "__len") != LUA_TNIL) {
    luaL_error(lua, "tables with a __len are not taken here");
  }
  if (lua_rawlen(lua, 1) > static_cast<lua_Unsigned>(kMostElements)) {
    luaL_error(lua, "the table is too long");
  }
}

/// Refuses a long range of elements from argument `first` to argument `last`.
void CheckRange(lua_State* lua, int first, int last) {
  int first_given = 0;
  int last_given = 0;
  const lua_Integer from = lua_tointegerx(lua, first, &first_given);
  const lua_Integer to = lua_tointegerx(lua, last, &last_given);
  if (!last_given) return;
  lua_Integer count = 0;
  if (__builtin_sub_overflow(to, first_given ? from : 1, &count) || count > kMostElements) {
    luaL_error(lua, "too many elements");
  }
}

int GuardedTableFunction(lua_State* lua) {
  CheckLength(lua);
  return CallGuarded(lua);
}

int GuardedConcat(lua_State* lua) {
  CheckLength(lua);
  CheckRange(lua, 3, 4);
  return CallGuarded(lua);
}

int GuardedUnpack(lua_State* lua) {
  CheckLength(lua);
  CheckRange(lua, 2, 3);
  return CallGuarded(lua);
}

int GuardedMove(lua_State* lua) {
  CheckLength(lua);
  CheckRange(lua, 2, 3);
  return CallGuarded(lua);
}

int GuardedRep(lua_State* lua) {
  Sandbox& sandbox = Sandbox::Of(lua);
  sandbox.CheckTime(lua);
  int given = 0;
  if (lua_tointegerx(lua, 2, &given) > sandbox.limits().memory) {
    luaL_error(lua, "resulting string too large");
  }
  return CallGuarded(lua);
}

/// Refuses a search that can take longer than the age of the world.
void CheckSearch(lua_State* lua, bool is_plain, bool can_anchor) {
  Sandbox::Of(lua).CheckTime(lua);
  if (!lua_isstring(lua, 1) || !lua_isstring(lua, 2)) return;
  std::size_t length = 0;
  std::size_t pattern_length = 0;
  lua_tolstring(lua, 1, &length);
  const char* const bytes = lua_tolstring(lua, 2, &pattern_length);
  const std::string_view pattern(bytes, pattern_length);
  const double cost =
      is_plain ? SearchCost(pattern, length) : PatternCost(pattern, length, can_anchor);
  if (cost > kLargestPatternCost) {
    luaL_error(lua, "the pattern may take too long on a text of %I bytes",
               static_cast<LUAI_UACINT>(length));
  }
}

int GuardedFind(lua_State* lua) {
  CheckSearch(lua, lua_toboolean(lua, 4), true);
  return CallGuarded(lua);
}

int GuardedMatch(lua_State* lua) {
  CheckSearch(lua, false, true);
  return CallGuarded(lua);
}

int GuardedGmatch(lua_State* lua) {
  CheckSearch(lua, false, false);
  return CallGuarded(lua);
}

/// Finalizers run with the instruction count off.
int GuardedSetmetatable(lua_State* lua) {
  if (lua_type(lua, 2) == LUA_TTABLE) {
    lua_pushliteral(lua, "__gc");
    if (lua_rawget(lua, 2) != LUA_TNIL) luaL_error(lua, "__gc is not available");
    lua_pop(lua, 1);
  }
  return CallGuarded(lua);
}

/// Calls an error handler, upvalue 1, unless the error is that of a script over its limits: it is
/// raised within the instruction count, which is off while the handler runs.
int HandleError(lua_State* lua) {
  return Sandbox::Of(lua).IsExhausted() ? 1 : CallGuarded(lua);
}

int GuardedXpcall(lua_State* lua) {
  if (lua_type(lua, 2) == LUA_TFUNCTION) {
    lua_pushvalue(lua, 2);
    lua_pushcclosure(lua, &HandleError, 1);
    lua_replace(lua, 2);
  }
  return CallGuarded(lua);
}

int LogWindowAppend(lua_State* lua) {
  std::size_t window_length = 0;
  std::size_t text_length = 0;
  const char* const window = luaL_checklstring(lua, 1, &window_length);
  const char* const text = luaL_checklstring(lua, 2, &text_length);
  AppendToLogWindow({window, window_length}, {text, text_length});
  return 0;
}

struct Guard {
  const char* library;
  const char* function;
  lua_CFunction guard;  ///< null: the function is taken out
};

constexpr Guard kGuards[] = {
    {LUA_GNAME, "collectgarbage", nullptr},
    {LUA_GNAME, "dofile", nullptr},
    {LUA_GNAME, "load", nullptr},
    {LUA_GNAME, "loadfile", nullptr},
    {LUA_GNAME, "print", nullptr},
    {LUA_GNAME, "warn", nullptr},
    {LUA_GNAME, "setmetatable", &GuardedSetmetatable},
    {LUA_GNAME, "xpcall", &GuardedXpcall},
    {LUA_STRLIBNAME, "dump", nullptr},
    {LUA_STRLIBNAME, "find", &GuardedFind},
    {LUA_STRLIBNAME, "gmatch", &GuardedGmatch},
    {LUA_STRLIBNAME, "gsub", &GuardedMatch},
    {LUA_STRLIBNAME, "match", &GuardedMatch},
    {LUA_STRLIBNAME, "rep", &GuardedRep},
    {LUA_TABLIBNAME, "concat", &GuardedConcat},
    {LUA_TABLIBNAME, "insert", &GuardedTableFunction},
    {LUA_TABLIBNAME, "move", &GuardedMove},
    {LUA_TABLIBNAME, "remove", &GuardedTableFunction},
    {LUA_TABLIBNAME, "sort", &GuardedTableFunction},
    {LUA_TABLIBNAME, "unpack", &GuardedUnpack},
};

}  // namespace

void OpenSafeLibraries(lua_State* lua) {
  constexpr luaL_Reg kLibraries[] = {{LUA_GNAME, &luaopen_base},
                                     {LUA_STRLIBNAME, &luaopen_string},
                                     {LUA_TABLIBNAME, &luaopen_table},
                                     {LUA_MATHLIBNAME, &luaopen_math},
                                     {LUA_UTF8LIBNAME, &luaopen_utf8}};
  for (const luaL_Reg& library : kLibraries)
    luaL_requiref(lua, library.name, library.func, 1);
  for (const Guard& guard : kGuards) {
    lua_getglobal(lua, guard.library);
    if (guard.guard != nullptr) {
      lua_getfield(lua, -1, guard.function);
      lua_pushcclosure(lua, guard.guard, 1);
    } else {
      lua_pushnil(lua);
    }
    lua_setfield(lua, -2, guard.function);
    lua_settop(lua, 0);
  }
  lua_register(lua, "log_window_append", &LogWindowAppend);
}

}  // namespace quillmere::scripts
