#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "GL_Memory.h"
#include "resources.h"

namespace {

constexpr Size kTooLarge[] = {-1, std::numeric_limits<Size>::min(), Size{1} << 60,
                              std::numeric_limits<Size>::max()};

TEST(Memory, BlocksGrowZeroedAndNeverShrink) {
  void* block = nullptr;
  ASSERT_EQ(GL_SetPtrSizeClear(0, 8, &block), noErr);
  void* same = block;
  EXPECT_EQ(GL_SetPtrSizeClear(8, 8, &block), noErr);
  EXPECT_EQ(GL_SetPtrSizeClear(8, 4, &block), noErr);
  EXPECT_EQ(block, same);
  GL_SetBytes(block, 8, 0xAA);
  ASSERT_EQ(GL_SetPtrSizeClear(8, 4096, &block), noErr);
  const auto* bytes = static_cast<const UInt8*>(block);
  EXPECT_EQ(bytes[7], 0xAA);
  for (int i = 8; i < 4096; ++i)
    ASSERT_EQ(bytes[i], 0);
  void* source = nullptr;
  GL_NewPtrClear(4, &source);
  EXPECT_EQ(GL_PtrAndPtr(&source, 4, &block, 4096, 4096, 1), noErr);
  EXPECT_EQ(source, nullptr);
  GL_DisposePtr(&block);
  GL_DisposePtr(&block);
  EXPECT_EQ(block, nullptr);
}

TEST(Memory, ScratchIsAStackThatFallsBackToTheHeap) {
  alignas(16) UInt8 memory[64];
  GL_ScratchArea scratch = {memory, sizeof(memory), 0, 0};
  Boolean from_heap = 1;
  EXPECT_EQ(GL_AllocateFromScratch(&scratch, 1, &from_heap, 1), memory);
  EXPECT_FALSE(from_heap);
  EXPECT_EQ(scratch.used, 16);
  // A request of exactly the free space goes to the heap.
  void* heap = GL_AllocateFromScratch32(&scratch, 12, &from_heap, 0);
  EXPECT_TRUE(from_heap);
  EXPECT_EQ(scratch.error, -108);
  GL_DeAllocateFromScratch32(&scratch, 12, from_heap, heap);
  EXPECT_EQ(scratch.used, 16);
  GL_DeAllocateFromScratch(&scratch, 1, 0, memory);
  EXPECT_EQ(scratch.used, 0);
  EXPECT_EQ(GL_AllocateFromScratch(&scratch, -1, &from_heap, 0), nullptr);
  EXPECT_EQ(GL_AllocateFromScratch32(&scratch, 1 << 30, &from_heap, 0), nullptr);
}

TEST(Memory, RefusesSizesThatCannotBe) {
  for (const Size size : kTooLarge) {
    void* block = &block;
    EXPECT_LT(GL_NewPtr(size, &block), 0) << size;
    EXPECT_EQ(block, nullptr);
    block = &block;
    EXPECT_LT(GL_NewPtrClear(size, &block), 0) << size;
    EXPECT_EQ(block, nullptr);
    EXPECT_LT(MemError(), 0);
    EXPECT_LT(GL_CopyPtr("x", size, &block), 0) << size;
    EXPECT_EQ(block, nullptr);
    EXPECT_LT(GL_SetPtrSizeClear(0, size, &block), 0) << size;
    EXPECT_EQ(block, nullptr);
    ASSERT_EQ(GL_NewPtrClear(4, &block), noErr);
    void* source = block;
    EXPECT_LT(GL_PtrAndPtr(&source, size, &block, 4, 4, 1), 0) << size;
    EXPECT_EQ(source, block);
    Handle handle = nullptr;
    EXPECT_LT(GL_ConvertPtrToHandle(&block, size, &handle, 1), 0) << size;
    EXPECT_NE(block, nullptr);
    GL_DisposePtr(&block);
  }
  void* block = nullptr;
  EXPECT_EQ(GL_NewPtr(0, &block), noErr);
  EXPECT_NE(block, nullptr);
  // An offset before the old end would write past the block, also one that is not there yet.
  void* none = nullptr;
  EXPECT_EQ(GL_PtrAndPtr(&block, 1, &none, 8, 4, 0), paramErr);
  EXPECT_EQ(GL_PtrAndPtr(&block, 0, nullptr, 0, 0, 0), noErr);
  EXPECT_EQ(GL_PtrAndPtr(&block, 1, nullptr, 0, 0, 0), paramErr);
  GL_DisposePtr(&block);
}

TEST(Memory, HandlesBecomeBlocksAndBack) {
  void* block = nullptr;
  ASSERT_EQ(GL_CopyPtr("hello", 5, &block), noErr);
  Handle handle = nullptr;
  ASSERT_EQ(GL_ConvertPtrToHandle(&block, 5, &handle, 1), noErr);
  EXPECT_EQ(block, nullptr);
  Handle copy = nullptr;
  ASSERT_EQ(GL_CopyHandle(handle, &copy), noErr);
  EXPECT_EQ(GL_EqualHandles(handle, copy), 1);
  EXPECT_EQ(GL_EqualHandles(handle, nullptr), 0);
  EXPECT_EQ(GL_EqualHandles(nullptr, nullptr), 1);
  ASSERT_EQ(GL_HandAndHand(&copy, handle, 1), noErr);
  EXPECT_EQ(copy, nullptr);
  ASSERT_EQ(GL_HdlToPtr(&handle, &block, 0), noErr);
  EXPECT_EQ(std::memcmp(block, "hellohello", 10), 0);
  GL_ClearHandle(handle);
  EXPECT_EQ(GL_AreBytesClear(*handle, 10), 1);
  (*handle)[9] = 1;
  EXPECT_EQ(GL_AreBytesClear(*handle, 10), 0);
  EXPECT_EQ(GL_AreBytesClear(*handle, 9), 1);
  EXPECT_EQ(GL_AreBytesClear(*handle, 0), 1);
  EXPECT_EQ(GL_HdlToPtr(&handle, nullptr, 1), paramErr);  // the handle goes on failure too
  EXPECT_EQ(handle, nullptr);
  GL_DisposePtr(&block);
  EXPECT_EQ(GL_HdlToPtr(&handle, &block, 1), noErr);
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(GL_CopyHandle(nullptr, &copy), noErr);
  EXPECT_EQ(copy, nullptr);
}

TEST(Memory, ResourcesAreReleased) {
  Handle handle = NewHandle(3);
  ReleaseResource(handle);  // none, so it stays
  EXPECT_EQ(ResError(), resNotFound);
  EXPECT_EQ(GetHandleSize(handle), 3);
  HSetState(handle, kHandleResourceMask);
  GL_DisposeHandle(&handle);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(handle, nullptr);
  GL_DisposeHandle(&handle);
}

}  // namespace
