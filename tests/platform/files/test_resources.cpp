/// Resources in their files, and damaged resource forks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>

#include "file_calls.h"
#include "forks.h"
#include "resource_map.h"
#include "resources.h"
#include "test_files.h"

namespace {

namespace files = quillmere::files;

Handle HandleOf(std::string_view text) {
  Handle handle = nullptr;
  PtrToHand(text.data(), &handle, static_cast<Size>(text.size()));
  return handle;
}

std::string TextOf(Handle handle) {
  return handle ? std::string(*handle, static_cast<std::size_t>(GetHandleSize(handle))) : "none";
}

class ResourcesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    FSRef parent{};
    ASSERT_EQ(noErr, files::ReferenceOf(folder.path(), &parent));
    FSCreateResFile(&parent, 1, u"r", kFSCatInfoNone, nullptr, &file, nullptr);
    ASSERT_EQ(noErr, ResError());
  }
  ResFileRefNum Open(SInt8 permission) const {
    const ResFileRefNum number = FSOpenResFile(&file, permission);
    EXPECT_EQ(noErr, ResError());
    return number;
  }

  quillmere::test::TemporaryFolder folder;
  FSRef file{};
};

TEST_F(ResourcesTest, AreKeptWithTypesNumbersAndNames) {
  const ResFileRefNum before = CurResFile();
  ResFileRefNum number = Open(fsRdWrPerm);
  EXPECT_EQ(number, CurResFile());
  EXPECT_EQ(0, Count1Types());
  EXPECT_EQ(128, UniqueID("TEXT"_4cc));
  AddResource(HandleOf("one"), "TEXT"_4cc, 128, reinterpret_cast<const UInt8*>("\4name"));
  AddResource(HandleOf(std::string(70'000, 'x')), "icns"_4cc, -5, nullptr);
  AddResource(HandleOf(""), "TEXT"_4cc, 129, nullptr);
  EXPECT_EQ(noErr, ResError());
  EXPECT_EQ(130, UniqueID("TEXT"_4cc));
  UpdateResFile(number);
  EXPECT_EQ(noErr, ResError());
  CloseResFile(number);
  EXPECT_EQ(0, CurResFile());

  number = Open(fsRdPerm);
  EXPECT_EQ(2, Count1Types());
  EXPECT_EQ(2, Count1Resources("TEXT"_4cc));
  EXPECT_EQ("one", TextOf(Get1Resource("TEXT"_4cc, 128)));
  EXPECT_EQ(std::string(70'000, 'x'), TextOf(Get1Resource("icns"_4cc, -5)));
  Handle second = Get1IndResource("TEXT"_4cc, 2);
  EXPECT_EQ("", TextOf(second));
  EXPECT_EQ(nullptr, Get1IndResource("TEXT"_4cc, 3));
  EXPECT_EQ(resNotFound, ResError());
  UInt8 name[256];
  SInt16 id = 0;
  ResType type = 0;
  GetResInfo(Get1Resource("TEXT"_4cc, 128), &id, &type, name);
  EXPECT_EQ(0, std::memcmp(name, "\4name", 5));
  EXPECT_EQ("TEXT"_4cc, type);
  GetResInfo(second, &id, nullptr, nullptr);
  EXPECT_EQ(129, id);
  // A file that is open for reading takes nothing.
  Handle handle = HandleOf("x");
  AddResource(handle, "TEXT"_4cc, 1, nullptr);
  EXPECT_EQ(addResFailed, ResError());
  DisposeHandle(handle);
  RemoveResource(second);
  EXPECT_EQ(rmvResFailed, ResError());
  // Without loading a handle is empty until it is asked for again.
  ReleaseResource(Get1Resource("TEXT"_4cc, 128));
  SetResLoad(0);
  EXPECT_EQ("", TextOf(Get1Resource("TEXT"_4cc, 128)));
  SetResLoad(1);
  handle = Get1Resource("TEXT"_4cc, 128);
  EXPECT_EQ("one", TextOf(handle));
  EXPECT_EQ(kHandleResourceMask, HGetState(handle));
  DetachResource(handle);
  EXPECT_EQ(0, HGetState(handle));
  CloseResFile(number);
  EXPECT_EQ("one", TextOf(handle));
  DisposeHandle(handle);
  UseResFile(number);
  EXPECT_EQ(resFNotFound, ResError());
  UseResFile(before);
}

TEST_F(ResourcesTest, AFailingUpdateKeepsTheOldOnes) {
  ResFileRefNum number = Open(fsRdWrPerm);
  AddResource(HandleOf("old"), "TEXT"_4cc, 1, nullptr);
  CloseResFile(number);
  bool has_failed = true;
  for (SInt64 step = 0; has_failed && step < 20; ++step) {
    number = Open(fsRdWrPerm);
    Handle removed = Get1Resource("TEXT"_4cc, 1);
    RemoveResource(removed);
    DisposeHandle(removed);
    Handle big = HandleOf(std::string(9000, 'b'));
    AddResource(big, "TEXT"_4cc, 2, nullptr);
    {
      const files::FailingCall failing(step, ENOSPC);
      UpdateResFile(number);
      has_failed = failing.HasFailed();
    }
    if (!has_failed) break;
    EXPECT_EQ(dskFulErr, ResError()) << step;
    const ResFileRefNum reader = Open(fsRdPerm);
    EXPECT_EQ("old", TextOf(Get1Resource("TEXT"_4cc, 1))) << step;
    CloseResFile(reader);
    UseResFile(number);
    RemoveResource(big);
    DisposeHandle(big);
    AddResource(HandleOf("old"), "TEXT"_4cc, 1, nullptr);
    CloseResFile(number);
  }
  CloseResFile(number);
  EXPECT_FALSE(has_failed);
}

/// Resources in one fork, made at random.
files::ResourceMap RandomMap(std::mt19937* random) {
  files::ResourceMap map;
  map.attributes = 0x80;
  map.reserved.assign(240, 7);
  const std::size_t count = (*random)() % 40;
  for (std::size_t i = 0; i < count; ++i) {
    files::Resource resource;
    resource.type = "abcd"_4cc + static_cast<OSType>((*random)() % 5);
    resource.id = static_cast<SInt16>((*random)());
    resource.attributes = static_cast<UInt8>((*random)());
    resource.has_name = (*random)() % 2 == 0;
    if (resource.has_name) resource.name.assign((*random)() % 256, 'n');
    resource.bytes.assign((*random)() % 1000, static_cast<UInt8>(i));
    map.resources.push_back(resource);
  }
  std::stable_sort(map.resources.begin(), map.resources.end(),
                   [](const auto& a, const auto& b) { return a.type < b.type; });
  return map;
}

TEST(ResourceMap, ComesBackAsItWasAndNoByteCanBreakIt) {
  std::mt19937 random(11);
  for (int round = 0; round < 50; ++round) {
    const files::ResourceMap map = RandomMap(&random);
    std::vector<UInt8> fork;
    ASSERT_TRUE(files::BuildResourceMap(map, &fork));
    files::ResourceMap read;
    ASSERT_TRUE(files::ParseResourceMap(fork, &read));
    EXPECT_EQ(map.attributes, read.attributes);
    EXPECT_EQ(map.reserved, read.reserved);
    ASSERT_EQ(map.resources.size(), read.resources.size());
    for (std::size_t i = 0; i < map.resources.size(); ++i) {
      const files::Resource& a = map.resources[i];
      const files::Resource& b = read.resources[i];
      EXPECT_TRUE(a.type == b.type && a.id == b.id && a.attributes == b.attributes &&
                  a.has_name == b.has_name && a.name == b.name && a.bytes == b.bytes);
    }
    // What is read of a damaged fork takes no more room than the fork has.
    for (int damage = 0; damage < 20; ++damage) {
      std::vector<UInt8> damaged = fork;
      damaged[random() % damaged.size()] = static_cast<UInt8>(random());
      damaged.resize(damaged.size() - random() % 3);
      std::size_t total = 0;
      files::ParseResourceMap(damaged, &read);
      for (const files::Resource& resource : read.resources)
        total += resource.bytes.size();
      EXPECT_LE(total, damaged.size());
    }
  }
}

TEST_F(ResourcesTest, OtherProgramsReadTheForkAndItsSidecar) {
  static constexpr char kVersion[] = "\2\x10\x80\0\0\0\0052.1.0\0122.1 trials";
  const ResFileRefNum number = Open(fsRdWrPerm);
  AddResource(HandleOf({kVersion, sizeof kVersion - 1}), "vers"_4cc, 1, nullptr);
  AddResource(HandleOf(std::string(5000, 'x')), "DATA"_4cc, 128, nullptr);
  CloseResFile(number);
  ASSERT_EQ(ResError(), noErr);
  FSIORefNum fork = 0;
  ASSERT_EQ(FSCreateFork(&file, 5, u"notes"), noErr);
  ASSERT_EQ(FSOpenFork(&file, 5, u"notes", fsRdWrPerm, &fork), noErr);
  EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, 4500, std::string(4500, 'n').data(), nullptr), noErr);
  EXPECT_EQ(FSCloseFork(fork), noErr);
  const auto told =
      quillmere::test::RunCommand({"exiftool", "-s", "-G1", (folder / "._r").string()});
  EXPECT_NE(told.output.find("XAttrQuillmereForkNotes"), std::string::npos) << told.output;

  HFSUniStr255 name;
  std::vector<UInt8> bytes;
  ASSERT_EQ(FSGetResourceForkName(&name), noErr);
  ASSERT_EQ(FSOpenFork(&file, name.length, name.unicode, fsRdPerm, &fork), noErr);
  EXPECT_EQ(files::ReadForkContent(fork, &bytes), noErr);
  FSCloseFork(fork);
  const std::filesystem::path plain = folder / "fork.rsrc";
  quillmere::test::WriteFile(plain, bytes);
  const auto resources =
      quillmere::test::RunCommand({"exiftool", "-s3", "-ApplicationVersion", plain.string()});
  EXPECT_EQ(resources.output, "2.1 trials\n");
}

TEST_F(ResourcesTest, DamagedAndEmptyForksHaveStatuses) {
  HFSUniStr255 name;
  FSGetResourceForkName(&name);
  FSIORefNum fork = 0;
  ASSERT_EQ(noErr, FSOpenFork(&file, name.length, name.unicode, fsRdWrPerm, &fork));
  EXPECT_EQ(noErr, FSSetForkSize(fork, fsFromStart, 40));
  EXPECT_EQ(-1, FSOpenResFile(&file, fsRdPerm));
  EXPECT_EQ(mapReadErr, ResError());
  EXPECT_EQ(-1, FSOpenResFile(&file, fsRdWrPerm));
  EXPECT_EQ(opWrErr, ResError());
  EXPECT_EQ(noErr, FSSetForkSize(fork, fsFromStart, 0));
  FSCloseFork(fork);
  EXPECT_EQ(-1, FSOpenResFile(&file, fsRdPerm));
  EXPECT_EQ(eofErr, ResError());
}

}  // namespace
