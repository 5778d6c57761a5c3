/// Descriptors to Lua values and back.
#pragma once

#include <lua.h>

#include "descriptors.h"

namespace quillmere::scripts {

/// Pushes a descriptor's value. Raises a Lua error for one that holds no proper value.
void PushDescriptor(lua_State* lua, const AEDesc& descriptor);
/// The descriptor of the value at `index`, of at most `largest` bytes in all. errAECoercionFail for
/// a value that has none, memFullErr for a larger one.
OSErr DescriptorOf(lua_State* lua, int index, Size largest, AEDesc* descriptor);

}  // namespace quillmere::scripts
