#include "open_scripting.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "lua_sandbox_private.h"
#include "script_values_private.h"
#include "text_coercions.h"
#include "whole_files.h"

namespace quillmere::scripts {
namespace {

/// A reference to a Lua value in the registry of its component's state.
using Reference = int;

enum class Kind { kScript, kContext, kValue };

/// What an ID names.
struct Holding {
  Kind kind;
  Reference value;                ///< the compiled script, the table of variables, or the value
  Reference context = LUA_NOREF;  ///< a script's own table of variables
  std::vector<OSAID> contexts;    ///< in which a script has run; 0 is its own
};

}  // namespace

/// An open component.
class ScriptComponent {
 public:
  explicit ScriptComponent(const ScriptLimits& limits) : sandbox_(limits) {}

  bool IsOpen() const { return sandbox_.IsOpen(); }
  bool IsRunning() const { return is_running_; }
  const ScriptLimits& limits() const { return sandbox_.limits(); }

  OSAError Load(std::string_view source, OSAID* script);
  OSAError Call(OSAID script, OSAID context, std::string_view name, const AEDescList& arguments,
                OSAID* result);
  OSAError RunFile(std::string_view source, const std::string& name, OSAID context, OSAID* result);
  OSAError MakeContext(OSAID parent, OSAID* context);
  OSAError Error(OSType selector, OSType type, AEDesc* descriptor) const;
  OSAError Value(OSAID value, OSType type, AEDesc* descriptor);
  OSAError Dispose(OSAID id);

 private:
  template <class Body>
  OSAError Run(Body body);
  Holding* Find(OSAID id, Kind kind);
  OSAID Keep(Holding holding);

  Sandbox sandbox_;
  std::map<OSAID, Holding> holdings_;
  OSAID last_id_ = 0;
  ScriptFault fault_;  ///< of the last script error
  bool is_running_ = false;
};

namespace {

/// Pushes the compiled script of a text.
void Compile(lua_State* lua, std::string_view source, const std::string& name) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (source.starts_with(kByteOrderMark)) source.remove_prefix(kByteOrderMark.size());
  const std::string chunk_name = "=" + name;
  const int status = luaL_loadbufferx(lua, source.data(), source.size(), chunk_name.c_str(), "t");
  if (status == LUA_OK) return;
  if (status == LUA_ERRMEM) RaiseFault(lua, memFullErr, "The script is too large.");
  RaiseFault(lua, OSASyntaxError, lua_tostring(lua, -1));
}

bool IsText(std::string_view source) {
  return !source.starts_with(LUA_SIGNATURE[0]);
}

/// Pushes a table of variables that sees those of the table at the top, which it replaces.
void PushContext(lua_State* lua) {
  lua_createtable(lua, 0, 1);
  lua_createtable(lua, 0, 1);
  lua_rotate(lua, -3, -1);
  lua_setfield(lua, -2, "__index");
  lua_setmetatable(lua, -2);
  lua_pushvalue(lua, -1);
  lua_setfield(lua, -2, LUA_GNAME);
}

/// Calls the compiled script at the top in a context, for `results` results.
void RunIn(lua_State* lua, Reference context, int results) {
  // Its variable of variables is replaced as a whole: functions from a run in another context keep
  // the one they were made with.
  if (luaL_loadstring(lua, "") != LUA_OK) lua_error(lua);
  lua_rawgeti(lua, LUA_REGISTRYINDEX, context);
  lua_setupvalue(lua, -2, 1);
  lua_upvaluejoin(lua, -2, 1, -1, 1);
  lua_pop(lua, 1);
  lua_call(lua, 0, results);
}

OSAError ReadSource(const FSRef& file, Size largest, std::string* source, std::string* name) {
  std::filesystem::path path;
  const OSStatus status = files::PathOf(file, &path);
  if (status != noErr) return status;
  std::vector<UInt8> bytes;
  const OSStatus read = ReadWholeFile(path, static_cast<std::size_t>(largest), &bytes);
  if (read != noErr) return read;
  source->assign(bytes.begin(), bytes.end());
  *name = path.filename().native();
  return noErr;
}

}  // namespace

template <class Body>
OSAError ScriptComponent::Run(Body body) {
  is_running_ = true;
  const AtExit stop([this] { is_running_ = false; });
  if (sandbox_.Run(std::move(body))) return noErr;
  fault_ = sandbox_.fault();
  return errOSAScriptError;
}

Holding* ScriptComponent::Find(OSAID id, Kind kind) {
  const auto found = holdings_.find(id);
  return found != holdings_.end() && found->second.kind == kind ? &found->second : nullptr;
}

OSAID ScriptComponent::Keep(Holding holding) {
  holdings_.emplace(++last_id_, std::move(holding));
  return last_id_;
}

OSAError ScriptComponent::Load(std::string_view source, OSAID* script) {
  if (!IsText(source)) return errOSABadStorageType;
  Holding holding = {Kind::kScript, LUA_NOREF, LUA_NOREF, {}};
  const OSAError status = Run([&](lua_State* lua) {
    Compile(lua, source, "script");
    lua_pushglobaltable(lua);
    PushContext(lua);
    holding.context = luaL_ref(lua, LUA_REGISTRYINDEX);
    holding.value = luaL_ref(lua, LUA_REGISTRYINDEX);
  });
  if (status == noErr) *script = Keep(std::move(holding));
  return status;
}

OSAError ScriptComponent::Call(OSAID script, OSAID context, std::string_view name,
                               const AEDescList& arguments, OSAID* result) {
  Holding* const called = Find(script, Kind::kScript);
  const Holding* const place = context != kOSANullScript ? Find(context, Kind::kContext) : nullptr;
  if (called == nullptr || (context != kOSANullScript && place == nullptr)) return errOSAInvalidID;
  const Reference variables = place != nullptr ? place->value : called->context;
  const bool has_run = std::ranges::find(called->contexts, context) != called->contexts.end();
  SInt32 count = 0;
  AECountItems(&arguments, &count);
  bool runs_now = has_run;
  Holding value = {Kind::kValue, LUA_NOREF, LUA_NOREF, {}};
  const OSAError status = Run([&](lua_State* lua) {
    if (!has_run) {
      lua_rawgeti(lua, LUA_REGISTRYINDEX, called->value);
      RunIn(lua, variables, 0);
      runs_now = true;
    }
    lua_rawgeti(lua, LUA_REGISTRYINDEX, variables);
    lua_pushlstring(lua, name.data(), name.size());
    if (lua_rawget(lua, -2) != LUA_TFUNCTION) {
      RaiseFault(lua, errAEEventNotHandled,
                 "The script has no subroutine \"" + std::string(name) + "\".");
    }
    luaL_checkstack(lua, count, "too many arguments");
    for (SInt32 index = 1; index <= count; ++index) {
      OwnedDescriptor argument;
      AEGetNthDesc(&arguments, index, typeWildCard, nullptr, argument.get());
      PushDescriptor(lua, *argument.get());
    }
    lua_call(lua, count, 1);
    value.value = luaL_ref(lua, LUA_REGISTRYINDEX);
  });
  if (runs_now && !has_run) called->contexts.push_back(context);
  if (status == noErr) *result = Keep(std::move(value));
  return status;
}

OSAError ScriptComponent::RunFile(std::string_view source, const std::string& name, OSAID context,
                                  OSAID* result) {
  const Holding* const place = Find(context, Kind::kContext);
  if (place == nullptr) return errOSAInvalidID;
  if (!IsText(source)) return errOSABadStorageType;
  Holding value = {Kind::kValue, LUA_NOREF, LUA_NOREF, {}};
  const OSAError status = Run([&](lua_State* lua) {
    Compile(lua, source, name);
    RunIn(lua, place->value, 1);
    value.value = luaL_ref(lua, LUA_REGISTRYINDEX);
  });
  if (status == noErr) *result = Keep(std::move(value));
  return status;
}

OSAError ScriptComponent::MakeContext(OSAID parent, OSAID* context) {
  const Holding* const seen = parent != kOSANullScript ? Find(parent, Kind::kContext) : nullptr;
  if (parent != kOSANullScript && seen == nullptr) return errOSAInvalidID;
  Holding made = {Kind::kContext, LUA_NOREF, LUA_NOREF, {}};
  const OSAError status = Run([&](lua_State* lua) {
    if (seen != nullptr) {
      lua_rawgeti(lua, LUA_REGISTRYINDEX, seen->value);
    } else {
      lua_pushglobaltable(lua);
    }
    PushContext(lua);
    made.value = luaL_ref(lua, LUA_REGISTRYINDEX);
  });
  if (status == noErr) *context = Keep(std::move(made));
  return status;
}

OSAError ScriptComponent::Error(OSType selector, OSType type, AEDesc* descriptor) const {
  if (selector != keyErrorNumber && selector != keyErrorString) return errOSABadSelector;
  if (fault_.number == noErr) return errOSASystemError;
  OwnedDescriptor told;
  if (selector == keyErrorNumber) {
    AECreateDesc(typeSInt32, &fault_.number, sizeof fault_.number, told.get());
  } else {
    // Of a script's text only the type that asks for plain bytes changes, and not the bytes.
    AECreateDesc(type == typeText ? typeText : typeUTF8Text, fault_.text.data(),
                 static_cast<Size>(fault_.text.size()), told.get());
  }
  return AECoerceDesc(told.get(), type, descriptor);
}

OSAError ScriptComponent::Value(OSAID value, OSType type, AEDesc* descriptor) {
  const Holding* const held = Find(value, Kind::kValue);
  if (held == nullptr) return errOSAInvalidID;
  OwnedDescriptor made;
  OSErr converted = noErr;
  const OSAError status = Run([&](lua_State* lua) {
    lua_rawgeti(lua, LUA_REGISTRYINDEX, held->value);
    converted = DescriptorOf(lua, 1, sandbox_.limits().memory, made.get());
  });
  if (status != noErr || converted != noErr) return status != noErr ? status : converted;
  return AECoerceDesc(made.get(), type, descriptor);
}

OSAError ScriptComponent::Dispose(OSAID id) {
  if (id == kOSANullScript) return noErr;
  const auto found = holdings_.find(id);
  if (found == holdings_.end()) return errOSAInvalidID;
  const Holding holding = found->second;
  holdings_.erase(found);
  const ScriptFault fault = fault_;  // still to be asked for
  Run([&](lua_State* lua) {
    luaL_unref(lua, LUA_REGISTRYINDEX, holding.value);
    luaL_unref(lua, LUA_REGISTRYINDEX, holding.context);
  });
  fault_ = fault;
  return noErr;
}

namespace {

/// The open components by their numbers.
struct Components {
  std::mutex mutex;
  std::map<std::uintptr_t, std::shared_ptr<ScriptComponent>> open;
  std::uintptr_t last = 0;
  ScriptLimits limits;
};

Components& AllComponents() {
  static auto* components = new Components;
  return *components;
}

/// Finds a component that takes calls.
OSAError Enter(ComponentInstance instance, std::shared_ptr<ScriptComponent>* component) {
  Components& components = AllComponents();
  const std::lock_guard lock(components.mutex);
  const auto found = components.open.find(reinterpret_cast<std::uintptr_t>(instance));
  if (found == components.open.end()) return badComponentInstance;
  if (found->second->IsRunning()) return errOSASystemError;
  *component = found->second;
  return noErr;
}

std::string BytesOf(const AEDesc& descriptor) {
  std::string bytes(static_cast<std::size_t>(AEGetDescDataSize(&descriptor)), '\0');
  if (!bytes.empty()) AEGetDescData(&descriptor, bytes.data(), static_cast<Size>(bytes.size()));
  return bytes;
}

bool IsSubroutineEvent(const AppleEvent& event) {
  OSType event_class = 0;
  OSType event_id = 0;
  return AEGetAttributePtr(&event, keyEventClassAttr, typeType, nullptr, &event_class,
                           sizeof event_class, nullptr) == noErr &&
         AEGetAttributePtr(&event, keyEventIDAttr, typeType, nullptr, &event_id, sizeof event_id,
                           nullptr) == noErr &&
         event_class == kAppleScriptSubtype && event_id == kASSubroutineEvent;
}

/// Takes an event apart; an event without arguments has an empty list.
OSErr ReadSubroutineEvent(const AppleEvent& event, std::string* name, AEDescList* arguments) {
  if (!IsSubroutineEvent(event)) return errAEEventNotHandled;
  OwnedDescriptor name_text;
  OSErr status = AEGetParamDesc(&event, keyASSubroutineName, typeWildCard, name_text.get());
  if (status != noErr) return status;
  *name = BytesOf(*name_text.get());
  status = AEGetParamDesc(&event, keyDirectObject, typeAEList, arguments);
  return status == errAEDescNotFound ? AECreateList(arguments) : status;
}

}  // namespace

void SetScriptLimits(const ScriptLimits& limits) {
  Components& components = AllComponents();
  const std::lock_guard lock(components.mutex);
  components.limits = limits;
}

}  // namespace quillmere::scripts

using quillmere::OwnedDescriptor;
using quillmere::scripts::ScriptComponent;

ComponentInstance OpenDefaultComponent(OSType type, OSType subtype) {
  if (type != kOSAComponentType || subtype != kAppleScriptSubtype) return nullptr;
  auto& components = quillmere::scripts::AllComponents();
  const std::lock_guard lock(components.mutex);
  auto component = std::make_shared<ScriptComponent>(components.limits);
  if (!component->IsOpen()) return nullptr;
  components.open.emplace(++components.last, std::move(component));
  return reinterpret_cast<ComponentInstance>(components.last);
}

OSErr CloseComponent(ComponentInstance instance) {
  std::shared_ptr<ScriptComponent> component;
  const OSAError status = quillmere::scripts::Enter(instance, &component);
  if (status == badComponentInstance) return invalidComponentID;
  if (status != noErr) return static_cast<OSErr>(status);
  auto& components = quillmere::scripts::AllComponents();
  const std::lock_guard lock(components.mutex);
  components.open.erase(reinterpret_cast<std::uintptr_t>(instance));
  return noErr;
}

OSAError OSALoad(ComponentInstance instance, const AEDesc* script_data, SInt32 /*mode*/,
                 OSAID* script) {
  if (script_data == nullptr || script == nullptr) return paramErr;
  *script = kOSANullScript;
  std::shared_ptr<ScriptComponent> component;
  const OSAError status = quillmere::scripts::Enter(instance, &component);
  if (status != noErr) return status;
  if (script_data->descriptorType != typeScript) return errOSABadStorageType;
  return component->Load(quillmere::scripts::BytesOf(*script_data), script);
}

OSAError OSAExecuteEvent(ComponentInstance instance, const AppleEvent* event, OSAID script,
                         OSAID context, SInt32 /*mode*/, OSAID* result) {
  if (event == nullptr || result == nullptr) return paramErr;
  *result = kOSANullScript;
  std::shared_ptr<ScriptComponent> component;
  OSAError status = quillmere::scripts::Enter(instance, &component);
  if (status != noErr) return status;
  std::string name;
  OwnedDescriptor arguments;
  status = quillmere::scripts::ReadSubroutineEvent(*event, &name, arguments.get());
  if (status != noErr) return status;
  return component->Call(script, context, name, *arguments.get(), result);
}

OSAError OSALoadExecuteFile(ComponentInstance instance, const FSRef* file, OSAID context,
                            SInt32 /*mode*/, OSAID* result) {
  if (file == nullptr || result == nullptr) return paramErr;
  *result = kOSANullScript;
  std::shared_ptr<ScriptComponent> component;
  OSAError status = quillmere::scripts::Enter(instance, &component);
  if (status != noErr) return status;
  std::string source;
  std::string name;
  status = quillmere::scripts::ReadSource(*file, component->limits().memory, &source, &name);
  return status != noErr ? status : component->RunFile(source, name, context, result);
}

OSAError OSAMakeContext(ComponentInstance instance, const AEDesc* /*name*/, OSAID parent,
                        OSAID* context) {
  if (context == nullptr) return paramErr;
  *context = kOSANullScript;
  std::shared_ptr<ScriptComponent> component;
  const OSAError status = quillmere::scripts::Enter(instance, &component);
  return status != noErr ? status : component->MakeContext(parent, context);
}

OSAError OSAScriptError(ComponentInstance instance, OSType selector, OSType type,
                        AEDesc* descriptor) {
  if (descriptor == nullptr) return paramErr;
  AEInitializeDesc(descriptor);
  std::shared_ptr<ScriptComponent> component;
  const OSAError status = quillmere::scripts::Enter(instance, &component);
  return status != noErr ? status : component->Error(selector, type, descriptor);
}

OSAError OSACoerceToDesc(ComponentInstance instance, OSAID value, OSType type, SInt32 /*mode*/,
                         AEDesc* descriptor) {
  if (descriptor == nullptr) return paramErr;
  AEInitializeDesc(descriptor);
  std::shared_ptr<ScriptComponent> component;
  const OSAError status = quillmere::scripts::Enter(instance, &component);
  return status != noErr ? status : component->Value(value, type, descriptor);
}

OSAError OSADispose(ComponentInstance instance, OSAID id) {
  std::shared_ptr<ScriptComponent> component;
  const OSAError status = quillmere::scripts::Enter(instance, &component);
  return status != noErr ? status : component->Dispose(id);
}
