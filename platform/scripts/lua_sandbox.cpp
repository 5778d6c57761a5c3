#include <time.h>

#include <cstdlib>

#include "lua_sandbox_private.h"

namespace quillmere::scripts {
namespace {

/// Instructions between two looks at the limits.
constexpr int kHookInterval = 1000;
/// A block from this size on, in bytes, is work enough to look at the clock.
constexpr std::size_t kLargeBlock = 1 << 20;

double ThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

Sandbox::Sandbox(const ScriptLimits& limits)
    : limits_(limits), state_(lua_newstate(&Sandbox::Allocate, this)) {
  if (state_ && !Run(&OpenSafeLibraries)) state_.reset();
}

Sandbox& Sandbox::Of(lua_State* lua) {
  void* user_data = nullptr;
  lua_getallocf(lua, &user_data);
  return *static_cast<Sandbox*>(user_data);
}

bool Sandbox::TimeIsUp() const {
  return deadline_ > 0 && ThreadSeconds() > deadline_;
}

void Sandbox::CheckTime(lua_State* lua) {
  if (TimeIsUp()) RaiseExhausted(lua);
}

void Sandbox::RaiseExhausted(lua_State* lua) {
  // From here on every instruction raises the error again, so that no pcall in the script can go
  // on.
  exhausted_ = true;
  lua_sethook(lua, &Sandbox::CountHook, LUA_MASKCOUNT, 1);
  luaL_error(lua, "the script ran too long");
}

void Sandbox::CountHook(lua_State* lua, lua_Debug* /*activation*/) {
  Sandbox& sandbox = Of(lua);
  sandbox.instructions_left_ -= kHookInterval;
  if (sandbox.exhausted_ || sandbox.instructions_left_ < 0 || sandbox.TimeIsUp()) {
    sandbox.RaiseExhausted(lua);
  }
}

void* Sandbox::Allocate(void* user_data, void* block, std::size_t old_size, std::size_t new_size) {
  auto& sandbox = *static_cast<Sandbox*>(user_data);
  const auto held = block != nullptr ? static_cast<Size>(old_size) : 0;  // else a kind of object
  if (new_size == 0) {
    std::free(block);
    sandbox.memory_used_ -= held;
    return nullptr;
  }
  const Size growth = static_cast<Size>(new_size) - held;
  if (growth > 0) {
    if (growth > sandbox.limits_.memory - sandbox.memory_used_) return nullptr;
    if (new_size >= kLargeBlock && sandbox.TimeIsUp()) return nullptr;  // the hook says why
  }
  void* const moved = std::realloc(block, new_size);
  if (moved != nullptr) sandbox.memory_used_ += growth;
  return moved;
}

int Sandbox::DescribeFault(lua_State* lua) {
  const auto text_at = [lua](int index) {
    std::size_t length = 0;
    const char* const bytes = lua_tolstring(lua, index, &length);
    return std::string(bytes, length);
  };
  ScriptFault fault = {errOSAGeneralError, {}};
  if (lua_isstring(lua, 1)) {
    fault.text = text_at(1);
  } else if (lua_istable(lua, 1)) {
    lua_pushliteral(lua, "number");
    lua_rawget(lua, 1);
    lua_pushliteral(lua, "message");
    lua_rawget(lua, 1);
    int is_number = 0;
    const lua_Integer number = lua_tointegerx(lua, 2, &is_number);
    if (is_number && number == static_cast<SInt32>(number) && number != 0) {
      fault.number = static_cast<SInt32>(number);
    }
    if (lua_isstring(lua, 3)) fault.text = text_at(3);
  } else {
    fault.text = std::string("The script raised a value of type ") + luaL_typename(lua, 1) + ".";
  }
  Of(lua).fault_ = fault;
  return 0;
}

bool Sandbox::RunProtected(lua_CFunction function, void* body) {
  lua_State* const lua = state_.get();
  exhausted_ = false;
  fault_ = {};
  instructions_left_ = limits_.instructions;
  deadline_ = ThreadSeconds() + limits_.processor_seconds;
  lua_sethook(lua, &Sandbox::CountHook, LUA_MASKCOUNT, kHookInterval);
  lua_settop(lua, 0);
  lua_pushcfunction(lua, &Sandbox::DescribeFault);
  lua_pushcfunction(lua, function);
  lua_pushlightuserdata(lua, body);
  const int status = lua_pcall(lua, 1, 0, 1);
  lua_settop(lua, 0);
  deadline_ = 0;
  if (status == LUA_OK) return true;
  if (status == LUA_ERRERR)
    fault_ = {errOSAGeneralError, "The script failed within its error handler."};
  if (exhausted_) {
    fault_ = {errAETimeout, fault_.text.empty() ? "The script ran too long." : fault_.text};
  } else if (status != LUA_ERRRUN && status != LUA_ERRERR) {
    fault_ = {memFullErr, "The script needs more memory than it may use."};
  }
  return false;
}

void RaiseFault(lua_State* lua, SInt32 number, const std::string& text) {
  lua_createtable(lua, 0, 2);
  lua_pushinteger(lua, number);
  lua_setfield(lua, -2, "number");
  lua_pushlstring(lua, text.data(), text.size());
  lua_setfield(lua, -2, "message");
  lua_error(lua);
}

}  // namespace quillmere::scripts
