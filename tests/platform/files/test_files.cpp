#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "aliases.h"
#include "catalogue.h"
#include "file_references.h"
#include "finder_information.h"
#include "launch_services.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::files::ReferenceOf;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

FSRef Reference(const fs::path& path) {
  FSRef reference{};
  EXPECT_EQ(ReferenceOf(path, &reference), noErr) << path;
  return reference;
}

OSStatus Valid(const FSRef& reference) {
  return FSGetCatalogInfo(&reference, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr);
}

TEST(FileReferences, NameOneObjectAndNoOther) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", "one");
  const FSRef a = Reference(folder / "a");
  EXPECT_EQ(Valid(a), noErr);
  EXPECT_NE(Valid(FSRef{}), noErr);

  fs::rename(folder / "a", folder / "b");
  EXPECT_EQ(Valid(a), fnfErr);
  quillmere::files::NoteMoved(a, folder / "b");
  EXPECT_EQ(Valid(a), noErr);

  fs::remove(folder / "b");
  WriteFile(folder / "b", "another object of the same name");
  EXPECT_EQ(Valid(a), fnfErr);
  const FSRef b = Reference(folder / "b");
  EXPECT_EQ(FSCompareFSRefs(&a, &b), -1);
  EXPECT_EQ(FSCompareFSRefs(&b, &b), 0);
}

TEST(FileReferences, AreFoundByNameInAFolder) {
  const TemporaryFolder folder;
  WriteFile(folder / "Größe \U0001F600", "x");
  const FSRef parent = Reference(folder.path());
  const quillmere::Owned<CFStringRef> name(quillmere::CreateFromUtf8("Größe \U0001F600"));
  HFSUniStr255 record;
  ASSERT_EQ(FSGetHFSUniStrFromString(name.get(), &record), noErr);
  FSRef found;
  ASSERT_EQ(FSMakeFSRefUnicode(&parent, record.length, record.unicode, 0, &found), noErr);
  FSRef above;
  HFSUniStr255 again;
  ASSERT_EQ(FSGetCatalogInfo(&found, kFSCatInfoNone, nullptr, &again, nullptr, &above), noErr);
  EXPECT_EQ(FSCompareFSRefs(&above, &parent), 0);
  EXPECT_EQ(std::u16string(again.unicode, again.length),
            std::u16string(record.unicode, record.length));

  EXPECT_EQ(FSMakeFSRefUnicode(&parent, 3, u"../", 0, &found), bdNamErr);
  EXPECT_EQ(FSMakeFSRefUnicode(&parent, 2, u"..", 0, &found), bdNamErr);
  EXPECT_EQ(FSMakeFSRefUnicode(&parent, 0, u"", 0, &found), errFSMissingName);
  EXPECT_EQ(FSMakeFSRefUnicode(&parent, 4, u"none", 0, &found), fnfErr);
  const std::u16string long_name(256, u'x');
  const quillmere::Owned<CFStringRef> too_long(
      CFStringCreateWithCharacters(nullptr, long_name.data(), 256));
  EXPECT_EQ(FSGetHFSUniStrFromString(too_long.get(), &record), errFSNameTooLong);
}

std::vector<std::string> Walk(const fs::path& path, ItemCount batch) {
  const FSRef folder = Reference(path);
  FSIterator iterator = nullptr;
  EXPECT_EQ(FSOpenIterator(&folder, 0, &iterator), noErr);
  std::vector<std::string> names;
  OSErr status = noErr;
  while (status == noErr) {
    std::vector<HFSUniStr255> found(batch);
    ItemCount actual = 0;
    status = FSGetCatalogInfoBulk(iterator, batch, &actual, nullptr, kFSCatInfoNone, nullptr,
                                  nullptr, nullptr, found.data());
    for (ItemCount i = 0; i < actual; ++i) {
      const quillmere::Owned<CFStringRef> name(FSCreateStringFromHFSUniStr(nullptr, &found[i]));
      names.push_back(quillmere::ToUtf8(name.get()));
    }
  }
  EXPECT_EQ(status, errFSNoMoreItems);
  EXPECT_EQ(FSCloseIterator(iterator), noErr);
  return names;
}

TEST(Catalogue, WalksInOrderOfCodePointsWithoutSidecars) {
  const TemporaryFolder folder;
  for (const char* name : {"b", "a", "Z", "é", "\U0001F600", "～", ".hidden", "not\xFFutf8"}) {
    WriteFile(folder / name, "x");
  }
  WriteFile(folder / "._a", std::string("\x00\x05\x16\x07", 4));
  WriteFile(folder / "._a", std::vector<UInt8>{0x00, 0x05, 0x16, 0x07});
  fs::create_symlink(folder / "nowhere", folder / "dangling");
  fs::create_directory(folder / "sub");
  const std::vector<std::string> expected = {
      ".hidden", "Z", "a", "b", "dangling", "not\xEF\xBF\xBDutf8", "sub", "é", "～", "\U0001F600"};
  for (const ItemCount batch : {1, 3, 5, 10, 11})
    EXPECT_EQ(Walk(folder.path(), batch), expected) << batch;
  fs::create_directory(folder / "empty");
  EXPECT_TRUE(Walk(folder / "empty", 10).empty());
  const FSRef file = Reference(folder / "a");
  FSIterator iterator;
  EXPECT_EQ(FSOpenIterator(&file, 0, &iterator), dirNFErr);
}

TEST(Catalogue, TellsExtensions) {
  const TemporaryFolder folder;
  const struct {
    const char* name;
    const char* extension;
  } cases[] = {{"a.mov", "mov"},      {"a.b.mov", "mov"}, {"PHOTO.JPG", "JPG"},
               {"photojpg", nullptr}, {".mov", nullptr},  {"a.", nullptr}};
  for (const auto& test : cases) {
    WriteFile(folder / test.name, "x");
    const FSRef file = Reference(folder / test.name);
    CFTypeRef value = nullptr;
    const OSStatus status = LSCopyItemAttribute(&file, -1, kLSItemExtension, &value);
    const quillmere::Owned<CFTypeRef> owner(value);
    EXPECT_EQ(status, test.extension ? noErr : kLSAttributeNotFoundErr) << test.name;
    EXPECT_EQ(quillmere::ToUtf8(quillmere::AsString(value)), test.extension ? test.extension : "");
  }
}

TEST(FinderInformation, LivesInAnAttributeOrComesFromASidecar) {
  const TemporaryFolder folder;
  WriteFile(folder / "movie", "x");
  quillmere::files::FinderInformation written;
  std::memcpy(written.bytes, "MooVTVOD", 8);
  ASSERT_EQ(quillmere::files::WriteFinderInformation(folder / "movie", written), noErr);
  quillmere::files::FinderInformation read;
  quillmere::files::ReadFinderInformation(folder / "movie", &read);
  EXPECT_EQ(read.Type(), "MooV"_4cc);
  EXPECT_EQ(read.Creator(), "TVOD"_4cc);
  ASSERT_EQ(quillmere::files::WriteFinderInformation(folder / "movie", {}), noErr);
  EXPECT_LT(getxattr((folder / "movie").c_str(), "user.com.apple.FinderInfo", nullptr, 0), 0);

  std::vector<UInt8> sidecar(38 + 32);
  const UInt8 magic[] = {0, 5, 0x16, 7, 0, 2, 0, 0};
  const UInt8 entry[] = {0, 1, 0, 0, 0, 9, 0, 0, 0, 38, 0, 0, 0, 32};
  std::copy(std::begin(magic), std::end(magic), sidecar.begin());
  std::copy(std::begin(entry), std::end(entry), sidecar.begin() + 24);
  std::copy(std::begin(written.bytes), std::end(written.bytes), sidecar.begin() + 38);
  WriteFile(folder / "._movie", sidecar);
  quillmere::files::ReadFinderInformation(folder / "movie", &read);
  EXPECT_EQ(read.Type(), "MooV"_4cc);
  for (std::size_t size = 0; size < sidecar.size(); ++size) {
    EXPECT_FALSE(quillmere::files::FinderInformationInSidecar({sidecar.data(), size}, &read))
        << size;
  }
}

TEST(Aliases, FindTheirTargetAndNothingElse) {
  const TemporaryFolder folder;
  const fs::path path = folder / "a name with ümläuts and \U0001F600.png";
  WriteFile(path, "x");
  const FSRef target = Reference(path);
  AliasHandle alias = nullptr;
  ASSERT_EQ(FSNewAlias(nullptr, &target, &alias), noErr);
  FSRef resolved;
  EXPECT_EQ(FSResolveAlias(nullptr, alias, &resolved, nullptr), noErr);
  EXPECT_EQ(FSCompareFSRefs(&resolved, &target), 0);

  const auto* bytes = reinterpret_cast<const UInt8*>(*alias);
  const std::vector<UInt8> record(bytes, bytes + GetHandleSize(alias));
  quillmere::files::AliasContent content;
  ASSERT_TRUE(quillmere::files::ReadAlias(record, &content));
  EXPECT_EQ(content.absolute_path, path);
  EXPECT_EQ(content.file_name, path.filename());

  fs::remove(path);
  EXPECT_EQ(FSResolveAlias(nullptr, alias, &resolved, nullptr), fnfErr);
  DisposeHandle(alias);

  AliasHandle planned = nullptr;
  ASSERT_EQ(quillmere::files::MakeAliasOfPath(folder / "to come.mov", &planned), noErr);
  fs::path place;
  EXPECT_EQ(quillmere::files::PathOfAlias(planned, &place), noErr);
  EXPECT_EQ(place, folder / "to come.mov");
  DisposeHandle(planned);
  EXPECT_EQ(quillmere::files::MakeAliasOfPath(folder / "no folder" / "x", &planned), fnfErr);
}

TEST(Aliases, DamagedRecordsAreToldNotTrusted) {
  const TemporaryFolder folder;
  WriteFile(folder / "x", "x");
  AliasHandle alias = nullptr;
  ASSERT_EQ(quillmere::files::MakeAliasOfPath(folder / "x", &alias), noErr);
  const auto* bytes = reinterpret_cast<const UInt8*>(*alias);
  const std::vector<UInt8> record(bytes, bytes + GetHandleSize(alias));
  quillmere::files::AliasContent content;
  for (std::size_t size = 0; size < record.size(); ++size) {
    const std::vector<UInt8> cut(record.begin(),
                                 record.begin() + static_cast<std::ptrdiff_t>(size));
    quillmere::files::ReadAlias(cut, &content);  // whatever it says, it stays inside
  }
  std::vector<UInt8> bad = record;
  bad[152] = 0xFF;  // the length of the first tagged item
  EXPECT_FALSE(quillmere::files::ReadAlias(bad, &content));
  DisposeHandle(alias);
}

}  // namespace
