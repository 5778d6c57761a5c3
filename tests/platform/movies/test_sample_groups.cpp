/// Sample groups that fragments bring along, joined to those of the movie.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "atom_builder.h"
#include "movie_file.h"
#include "movie_toolbox.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

Bytes GroupDescriptions(int version, const std::vector<std::string>& descriptions,
                        UInt32 default_index = 0) {
  ByteWriter content;
  content.Text("test");
  if (version >= 1) content.U32(0);
  if (version >= 2) content.U32(default_index);
  content.U32(descriptions.size());
  for (const std::string& one : descriptions) {
    if (version >= 1) content.U32(one.size());
    content.Text(one);
  }
  return MakeFullAtom("sgpd", version, 0, content.bytes);
}

Bytes Membership(const std::vector<std::pair<UInt32, UInt32>>& runs) {
  ByteWriter content;
  content.Text("test").U32(runs.size());
  for (const auto& [count, index] : runs)
    content.U32(count).U32(index);
  return MakeFullAtom("sbgp", 0, 0, content.bytes);
}

/// What the tables of an `stbl` (its children) say of each sample; "" for none.
std::vector<std::string> DescriptionsOfSamples(const Bytes& stbl) {
  std::vector<std::string> list = {""};
  const auto sgpd = FindAtom(stbl, {"stbl", "sgpd"});
  const auto sbgp = FindAtom(stbl, {"stbl", "sbgp"});
  std::vector<std::string> samples;
  if (!sgpd || !sbgp) return samples;
  std::size_t at = sgpd->content();
  const UInt8 version = stbl[at];
  const UInt32 length = version >= 1 ? U32At(stbl, at + 8) : 2;
  at += version == 0 ? 8U : version == 1 ? 12U : 16U;
  UInt32 count = U32At(stbl, at);
  for (at += 4; count > 0; --count) {
    std::size_t own = length;
    if (own == 0) {
      own = U32At(stbl, at);
      at += 4;
    }
    const auto begin = stbl.begin() + static_cast<std::ptrdiff_t>(at);
    list.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(own));
    at += own;
  }
  EXPECT_EQ(at, sgpd->end());
  at = sbgp->content() + 8;
  for (count = U32At(stbl, at), at += 4; count > 0; --count, at += 8) {
    samples.insert(samples.end(), U32At(stbl, at), list.at(U32At(stbl, at + 4)));
  }
  return samples;
}

/// Ten fragments of four pictures each, into which the cases put their groups.
class SampleGroups : public testing::Test {
 protected:
  static constexpr std::size_t kFragments = 10;

  void SetUp() override {
    RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=64x48:r=20:d=2", "-c:v", "mpeg4", "-g", "4",
               "-movflags", "+frag_keyframe+empty_moov+default_base_moof", path_.string()});
    original_ = ReadFile(path_);
  }

  /// The movie with atoms put into each `traf`; `of_movie` goes into the `stbl`.
  void Patch(const std::vector<Bytes>& of_fragments, const Bytes& of_movie) const {
    Bytes file;
    std::size_t fragment = 0;
    for (const AtomPlace& place : AtomsIn(original_, 0, original_.size())) {
      const auto begin = original_.begin() + static_cast<std::ptrdiff_t>(place.offset);
      Bytes atom(begin, begin + static_cast<std::ptrdiff_t>(place.size));
      const std::string type = TypeAt(original_, place);
      if (type == "moov") AppendChild(&atom, {"moov", "trak", "mdia", "minf", "stbl"}, of_movie);
      if (type == "moof") {
        const Bytes& added = of_fragments.at(fragment++);
        const auto run = FindAtom(atom, {"moof", "traf", "trun"});
        // The media data moves behind the larger fragment.
        const std::size_t field = run->content() + 8;
        PutNumber(&atom, field, U32At(atom, field) + added.size(), 4);
        AppendChild(&atom, {"moof", "traf"}, added);
      }
      file.insert(file.end(), atom.begin(), atom.end());
    }
    ASSERT_EQ(fragment, kFragments);
    WriteFile(path_, file);
  }

  OSStatus Read(Bytes* stbl) const {
    movies::MovieFile file;
    const OSStatus status = movies::ReadMovieFile(path_, &file);
    if (status != noErr) return status;
    Bytes moov;
    file.movie->Write(&moov);
    *stbl = AtomBytes(moov, {"moov", "trak", "mdia", "minf", "stbl"});
    return noErr;
  }

  TemporaryFolder folder_;
  fs::path path_ = folder_ / "a.mp4";
  Bytes original_;
};

TEST_F(SampleGroups, OfFragmentsAndTheMovieAreJoined) {
  for (const int version : {0, 1, 2}) {
    SCOPED_TRACE(version);
    std::vector<Bytes> fragments(kFragments);
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < kFragments; ++i) {
      if (i == 3) {  // a fragment that says nothing
        expected.insert(expected.end(), 4, "");
        continue;
      }
      const std::string own = i % 2 == 0 ? "e0" : "o1";
      // One of the fragment's own, one of the movie's, one in no group, and one that is not told
      // of.
      fragments[i] = Concatenate(
          {GroupDescriptions(version, {"mm", own}), Membership({{1, 0x10002}, {1, 2}, {1, 0}})});
      expected.insert(expected.end(), {own, "nn", "", ""});
    }
    Patch(fragments, GroupDescriptions(version, {"mm", "nn"}));
    Bytes stbl;
    ASSERT_EQ(Read(&stbl), noErr);
    EXPECT_EQ(DescriptionsOfSamples(stbl), expected);
    // "mm" of every fragment is that of the movie; one each of the others is added.
    const std::string all(stbl.begin(), stbl.end());
    for (const char* text : {"mm", "nn", "e0", "o1"})
      EXPECT_EQ(all.find(text, all.find("sgpd")), all.rfind(text)) << text;
  }
}

TEST_F(SampleGroups, DefaultsHoldWhereNothingIsTold) {
  std::vector<Bytes> fragments(kFragments);
  fragments[0] = GroupDescriptions(2, {"long one", "b"}, 2);
  fragments[1] = Concatenate({GroupDescriptions(2, {"c"}, 1), Membership({{2, 0}})});
  Patch(fragments, {});
  Bytes stbl;
  ASSERT_EQ(Read(&stbl), noErr);
  std::vector<std::string> expected = {"b", "b", "b", "b", "", "", "c", "c"};
  expected.resize(4 * kFragments);
  EXPECT_EQ(DescriptionsOfSamples(stbl), expected);
}

TEST_F(SampleGroups, DamagedOnesAreRefused) {
  const Bytes good = GroupDescriptions(1, {"aa"});
  const Bytes cases[] = {
      Concatenate({good, Membership({{1, 0x10002}})}),  // no such description of the fragment
      Concatenate({good, Membership({{1, 2}})}),        // nor of the movie
      Concatenate({good, Membership({{5, 0x10001}})}),  // more samples than the fragment has
      Concatenate({good, Membership({{4, 0x10001}}), Membership({{4, 0}})}),  // told twice
      GroupDescriptions(2, {"aa"}, 2),
      GroupDescriptions(3, {"aa"}),
      MakeFullAtom("sgpd", 1, 0, ByteWriter().Text("test").U32(4).U32(0xFFFFFFFF).U32(0).bytes),
      MakeFullAtom("sgpd", 0, 0, ByteWriter().Text("test").U32(2).Zeros(3).bytes),
      MakeFullAtom("sbgp", 0, 0, ByteWriter().Text("test").U32(1).U32(1).bytes)};
  for (const Bytes& one : cases) {
    std::vector<Bytes> fragments(kFragments);
    fragments[2] = one;
    Patch(fragments, {});
    Bytes stbl;
    EXPECT_EQ(Read(&stbl), invalidSampleTable) << &one - cases;
  }
}

}  // namespace
}  // namespace quillmere::test
