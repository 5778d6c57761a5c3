/// A Lua state with the safe part of the libraries and limits on what runs in it.
#pragma once

#include <lauxlib.h>
#include <lua.h>

#include <memory>
#include <string>

#include "open_scripting.h"

namespace quillmere::scripts {

/// What OSAScriptError tells; number 0 is no error.
struct ScriptFault {
  SInt32 number = 0;
  std::string text;
};

class Sandbox {
 public:
  explicit Sandbox(const ScriptLimits& limits);
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  /// Whether there was memory for the state.
  bool IsOpen() const { return state_ != nullptr; }
  const ScriptLimits& limits() const { return limits_; }
  const ScriptFault& fault() const { return fault_; }

  /// Runs `body(state)`, which may raise Lua errors, on an empty stack with fresh limits. False,
  /// and fault() tells why, when an error ends it.
  template <class Body>
  bool Run(Body body) {
    return RunProtected(
        [](lua_State* lua) {
          auto* const running = static_cast<Body*>(lua_touserdata(lua, 1));
          lua_settop(lua, 0);
          (*running)(lua);
          return 0;
        },
        &body);
  }

  /// The sandbox of a state.
  static Sandbox& Of(lua_State* lua);
  /// Whether the running call is over its limits.
  bool IsExhausted() const { return exhausted_; }
  /// Raises an error if the time is up.
  void CheckTime(lua_State* lua);

 private:
  struct Closer {
    void operator()(lua_State* lua) const { lua_close(lua); }
  };

  static void* Allocate(void* user_data, void* block, std::size_t old_size, std::size_t new_size);
  static void CountHook(lua_State* lua, lua_Debug* activation);
  static int DescribeFault(lua_State* lua);

  bool RunProtected(lua_CFunction function, void* body);
  bool TimeIsUp() const;
  void RaiseExhausted(lua_State* lua);

  ScriptLimits limits_;
  Size memory_used_ = 0;
  SInt64 instructions_left_ = 0;
  double deadline_ = 0;  ///< in seconds of the thread's processor time; 0 before the first run
  bool exhausted_ = false;
  ScriptFault fault_;
  std::unique_ptr<lua_State, Closer> state_;
};

/// Raises a script error with a number and a text, and does not return.
void RaiseFault(lua_State* lua, SInt32 number, const std::string& text);

/// Opens the libraries that scripts see, with what could reach out or run for ever taken out or
/// guarded. Pushes nothing.
void OpenSafeLibraries(lua_State* lua);

}  // namespace quillmere::scripts
