/// Sample-description extensions: the records, the extensions of descriptions, and movies of other
/// programs that are read, changed and read by them again.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "QT_Ide_Descriptions.h"
#include "QT_Movie_File.h"
#include "color_spaces.h"
#include "file_references.h"
#include "memory_handles.h"
#include "test_files.h"

namespace {

using namespace quillmere::test;
using quillmere::Owned;

struct Dispose {
  void operator()(Ptr* handle) const { DisposeHandle(handle); }
};
using OwnedHandle = std::unique_ptr<Ptr, Dispose>;

OwnedHandle HandleOf(const std::string& bytes) {
  Handle handle = nullptr;
  EXPECT_EQ(PtrToHand(bytes.data(), &handle, static_cast<Size>(bytes.size())), noErr);
  return OwnedHandle(handle);
}
OwnedHandle NewYuv2() {
  ImageDescriptionHandle description = nullptr;
  EXPECT_EQ(QT_MakeYuv2ImageDescription(720, 576, &description), noErr);
  return OwnedHandle(description);
}
/// The contents of a type's extensions, a space behind each.
std::string Contents(const OwnedHandle& description, OSType type) {
  std::string all;
  for (SInt32 i = 1;; ++i) {
    Handle extension = nullptr;
    if (GetImageDescriptionExtension(description.get(), &extension, type, i) != noErr) return all;
    const OwnedHandle owned(extension);
    all += std::string(*extension, static_cast<std::size_t>(GetHandleSize(extension))) + ' ';
  }
}

constexpr OSType kA = "aaaa"_4cc, kB = "bbbb"_4cc;

TEST(ImageDescriptionExtensions, AreSetByIndexCopiedAndCompared) {
  const OwnedHandle one = NewYuv2();
  for (const char* text : {"1", "2", "3", "4"})
    ASSERT_EQ(AddImageDescriptionExtension(one.get(), HandleOf(text).get(), kA), noErr);
  ASSERT_EQ(AddImageDescriptionExtension(one.get(), HandleOf("b").get(), kB), noErr);
  EXPECT_EQ(QT_SetIndexedImageDescExtension(one.get(), kA, 2, HandleOf("x").get()), noErr);
  EXPECT_EQ(QT_SetIndexedImageDescExtension(one.get(), kA, 5, HandleOf("y").get()), noErr);
  EXPECT_EQ(QT_SetIndexedImageDescExtension(one.get(), kA, 7, HandleOf("z").get()),
            codecExtensionNotFoundErr);
  EXPECT_EQ(Contents(one, kA), "1 x 3 4 y ");
  SInt32 count = 0;
  EXPECT_EQ(QT_CountImageDescExtTypes(one.get(), &count), noErr);
  EXPECT_EQ(count, 2);

  const OwnedHandle two = NewYuv2();
  for (const char* text : {"p", "q"})
    AddImageDescriptionExtension(two.get(), HandleOf(text).get(), kA);
  EXPECT_EQ(QT_CopyAllImageDescExts(one.get(), two.get(), 0), noErr);
  EXPECT_EQ(Contents(two, kA), "p q 3 4 y ");
  EXPECT_EQ(QT_CopyAllImageDescExts(one.get(), two.get(), 1), noErr);
  EXPECT_EQ(Contents(two, kA), "1 x 3 4 y ");
  EXPECT_EQ(QT_AddSingleImageDescExtension(two.get(), kA, HandleOf("s").get()), noErr);
  EXPECT_EQ(Contents(two, kA), "s ");
  EXPECT_EQ(Contents(two, kB), "b ");

  const OwnedHandle mask = NewYuv2(), difference = NewYuv2();
  const SInt32 wide = 1000;
  ICMImageDescriptionSetProperty(two.get(), "idsc"_4cc, "encw"_4cc, 4, &wide);
  ASSERT_EQ(QT_EqualImageDescs(one.get(), two.get(), mask.get(), 1, 0, nullptr, difference.get()),
            noErr);
  ImageDescription record{};
  std::memcpy(&record, *difference, sizeof record);
  EXPECT_EQ(record.width, 280);
  EXPECT_EQ(record.height, 0);
  EXPECT_EQ(record.name[0], 1);
  EXPECT_EQ(CountImageDescriptionExtensionType(difference.get(), kA, &count), noErr);
  EXPECT_EQ(count, 5);  // one that differs, four that are over
  EXPECT_EQ(Contents(difference, kB), "");
  // A field that the mask has no part in stays.
  std::memset(*mask + 32, 0, 2);
  ICMImageDescriptionSetProperty(difference.get(), "idsc"_4cc, "encw"_4cc, 4, &wide);
  ASSERT_EQ(QT_EqualImageDescs(one.get(), two.get(), mask.get(), 0, 0, nullptr, difference.get()),
            noErr);
  std::memcpy(&record, *difference, sizeof record);
  EXPECT_EQ(record.width, 1000);
  const OwnedHandle shorter = HandleOf("no description");
  EXPECT_EQ(QT_CountImageDescExtTypes(shorter.get(), &count), badImageDescription);
}

TEST(ImageDescriptionProperties, AreBigEndianExtensionsAndComeBack) {
  const OwnedHandle description = NewYuv2();
  const QT_Clap clap = {702, 1, 575, 2, -3, 4, 5, 6};
  QT_Clap back = {};
  EXPECT_EQ(QT_GetClapFromImageDesc(description.get(), &back), codecExtensionNotFoundErr);
  EXPECT_EQ(QT_SetClapInImageDesc(description.get(), &clap), noErr);
  EXPECT_EQ(QT_SetClapInImageDesc(description.get(), &clap), noErr);  // takes the old one's place
  EXPECT_EQ(Contents(description, "clap"_4cc).size(), 33U);
  EXPECT_EQ(Contents(description, "clap"_4cc).substr(16, 4), "\xFF\xFF\xFF\xFD");
  EXPECT_EQ(QT_GetClapFromImageDesc(description.get(), &back), noErr);
  EXPECT_TRUE(QT_EqualClap(&clap, &back));
  float gamma = 0;
  EXPECT_EQ(QT_SetGammaInImageDesc(description.get(), 2.2F), noErr);
  EXPECT_EQ(QT_GetGammaFromImageDesc(description.get(), &gamma), noErr);
  EXPECT_NEAR(gamma, 2.2F, 1e-5F);

  QT_Nclc nclc = {1, 1, 1, 1};
  EXPECT_EQ(QT_GetNclcFromImageDesc(description.get(), &nclc), noErr);
  EXPECT_EQ(nclc.primaries, 0);
  Boolean has = 1;
  EXPECT_EQ(QT_HasGamm22inNclc(description.get(), &has), noErr);
  EXPECT_FALSE(has);
  nclc = {kQT_NclcType, 5, 1, 6};
  EXPECT_EQ(QT_SetNclcInImageDesc(description.get(), &nclc), noErr);
  EXPECT_EQ(QT_HasGamm22inNclc(description.get(), &has), noErr);
  EXPECT_TRUE(has);
  // A profile stands beside the parameters, and comes first for the colour space.
  CGColorSpaceRef space = nullptr;
  EXPECT_EQ(QT_CreateColorSpaceForNclc(&nclc, &space), noErr);
  const Owned<CGColorSpaceRef> owned_space(space);
  const Owned<CFDataRef> profile(CGColorSpaceCopyICCProfile(space));
  ASSERT_TRUE(profile);
  EXPECT_EQ(QT_SetIccProfileInImageDesc(description.get(), profile.get()), noErr);
  CFDataRef read = nullptr;
  EXPECT_EQ(QT_GetIccProfileFromImageDesc(description.get(), &read), noErr);
  const Owned<CFDataRef> owned_read(read);
  EXPECT_EQ(CFDataGetLength(read), CFDataGetLength(profile.get()));
  QT_Nclc kept = {};
  EXPECT_EQ(QT_GetNclcFromImageDesc(description.get(), &kept), noErr);
  EXPECT_TRUE(QT_EqualNclc(&kept, &nclc));
  nclc.primaries = 2;
  EXPECT_NE(QT_CreateColorSpaceForNclc(&nclc, &space), noErr);
  EXPECT_EQ(space, nullptr);

  SInt32 row_bytes = 0;
  EXPECT_EQ(QT_GetImageDescRowbytes(description.get(), &has, &row_bytes), noErr);
  EXPECT_EQ(row_bytes, 1440);
  SCSpatialSettings settings = {"avc1"_4cc, nullptr, 24, 512};
  ImageDescriptionHandle made = nullptr;
  EXPECT_EQ(QT_MakeImageDescription(&settings, 10, 20, 30, &made), noErr);
  const OwnedHandle owned(made);
  EXPECT_EQ(QT_GetImageDescRowbytes(made, &has, &row_bytes), noErr);
  EXPECT_FALSE(has);
  settings.codecType = "none"_4cc;
  EXPECT_EQ(QT_MakeImageDescription(&settings, 10, 20, 30, &made), noCodecErr);
}

TEST(ImageDescriptionRecords, FollowTheirRules) {
  QT_Fiel fiel = {};
  QT_InterlaceToFiel("mjpb"_4cc, 1, 1, &fiel);
  EXPECT_EQ(fiel.detail, 1);
  QT_InterlaceToFiel("dvc "_4cc, 1, 0, &fiel);
  EXPECT_EQ(fiel.detail, 14);
  Boolean interlaced = 0;
  UInt8 top = 9;
  QT_GetInterlaceFromFiel(&fiel, &interlaced, &top);
  EXPECT_TRUE(interlaced && top == 0);
  QT_InterlaceToFiel("dvc "_4cc, 0, 1, &fiel);
  QT_GetInterlaceFromFiel(&fiel, &interlaced, &top);
  EXPECT_TRUE(!interlaced && top == 2);
  char text[256];
  fiel = {0, 14};
  QT_SPrintFielWithNameExt(text, "f", &fiel);
  EXPECT_STREQ(text, "f: fields 0 (interlaced), detail 14 (bottom field first)\n");
  const QT_Pasp a = {59, 54}, b = {118, 108}, c = {0, 1}, d = {0, 2};
  EXPECT_TRUE(QT_EqualPasp(&a, &b));
  EXPECT_FALSE(QT_EqualPasp(&c, &d));
  const QT_Pasp e = {128, 117};
  EXPECT_FALSE(QT_EqualPasp(&a, &e));
  EXPECT_TRUE(QT_EqualPasp2(720, &a, &a));
  QT_Clap clap = {704, 1, 480, 1, -1, 3, 0, 1}, same = {1408, 2, 960, 2, -2, 6, 0, 5};
  EXPECT_TRUE(QT_EqualClap(&clap, &same));
  EXPECT_TRUE(QT_EqualClap2(&clap, &same));
  same.horizOffN = 2;
  EXPECT_FALSE(QT_EqualClap(&clap, &same));
  QT_FlipClap(&clap);
  EXPECT_EQ(clap.horizOffN, -1);
  EXPECT_EQ(clap.horizOffD, 0x03000000U);
  QT_SPrintClapWithName(text, "c", &same);
  EXPECT_STREQ(text, "c: clean w,h = 1408/2,960/2, offset h,v = 2/6,0/5");
  EXPECT_TRUE(QT_GammaEqualsMacGamma(0));
  EXPECT_TRUE(QT_GammaEqualsMacGamma(117965));
  EXPECT_FALSE(QT_GammaEqualsMacGamma(118031));
}

TEST(ImageDescriptionRecords, ColourParametersAreGuessed) {
  const struct {
    OSType codec;
    SInt32 height;
    float gamma;
    UInt16 expected[3];
  } rows[] = {{"rle "_4cc, 486, 2.2F, {6, 1, 6}},  {"rle "_4cc, 576, 1.8F, {5, 4, 6}},
              {"raw "_4cc, 1080, 2.2F, {6, 2, 6}}, {"raw "_4cc, 1080, 1, {4, 2, 6}},
              {"2vuy"_4cc, 1080, 2.2F, {1, 1, 1}}, {"2vuy"_4cc, 240, 2.2F, {6, 1, 6}},
              {"avc1"_4cc, 300, 2.2F, {5, 1, 6}},  {"avc1"_4cc, 480, 1.8F, {4, 4, 6}}};
  QT_Nclc nclc = {};
  for (const auto& row : rows) {
    QT_GuessNclc(row.codec, row.height, row.gamma, &nclc);
    EXPECT_TRUE(nclc.primaries == row.expected[0] && nclc.transferFunction == row.expected[1] &&
                nclc.matrix == row.expected[2])
        << row.height << ' ' << row.gamma;
  }
  QT_CreateDefaultNclc(600, 25, &nclc);
  EXPECT_EQ(nclc.primaries, 5);
  QT_CreateDefaultNclc(600, 30, &nclc);
  EXPECT_EQ(nclc.primaries, 6);
  nclc = {kQT_NclcType, 2, 2, 2};
  QT_ConformInNclc(&nclc, 300, 2.2F);
  EXPECT_TRUE(nclc.primaries == 6 && nclc.transferFunction == 9 && nclc.matrix == 6);
  nclc = {kQT_NclcType, 2, 4, 2};
  QT_ConformInNclc(&nclc, 1080, 2.2F);
  EXPECT_TRUE(nclc.primaries == 4 && nclc.transferFunction == 4 && nclc.matrix == 1);
}

TEST(ImageDescriptionRecords, GoThroughDictionaries) {
  const Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(kCFAllocatorDefault));
  const QT_Fiel fiel = {2, 14};
  const QT_Pasp pasp = {4000000000U, 3};
  const QT_Clap clap = {1, 2, 3, 4000000000U, -5, 6, -7, 8};
  const QT_Nclc nclc = {kQT_NclcType, 5, 1, 6};
  QT_AddFielToDict(dictionary.get(), &fiel);
  QT_AddPaspToDict(dictionary.get(), CFSTR("p"), &pasp);
  QT_AddClapToDict(dictionary.get(), &clap);
  QT_AddNclcToDict(dictionary.get(), CFSTR("n"), &nclc);
  QT_Fiel fiel_back = {};
  QT_Pasp pasp_back = {7, 7};
  QT_Clap clap_back = {};
  QT_Nclc nclc_back = {};
  QT_GetFielFromDict(dictionary.get(), CFSTR("fiel"), &fiel_back);
  QT_GetPaspFromDict(dictionary.get(), CFSTR("none"), &pasp_back);
  EXPECT_EQ(pasp_back.hSpacing, 7U);
  QT_GetPaspFromDict(dictionary.get(), CFSTR("p"), &pasp_back);
  QT_GetClapFromDict(dictionary.get(), CFSTR("clap"), &clap_back);
  QT_GetNclcFromDict(dictionary.get(), CFSTR("n"), &nclc_back);
  EXPECT_TRUE(QT_EqualFiel(&fiel, &fiel_back));
  EXPECT_EQ(std::memcmp(&pasp, &pasp_back, sizeof pasp), 0);
  EXPECT_EQ(std::memcmp(&clap, &clap_back, sizeof clap), 0);
  EXPECT_TRUE(QT_EqualNclc(&nclc, &nclc_back));
}

void FlattenTo(Movie movie, const std::filesystem::path& file) {
  FSRef folder{};
  Handle reference = nullptr;
  OSType type = 0;
  ASSERT_EQ(quillmere::files::ReferenceOf(file.parent_path(), &folder), noErr);
  const Owned<CFStringRef> name(quillmere::CreateFromUtf8(file.filename().string()));
  ASSERT_EQ(QTNewDataReferenceFromFSRefCFString(&folder, name.get(), 0, &reference, &type), noErr);
  const OwnedHandle owned(reference);
  FlattenMovieDataToDataRef(movie, flattenAddMovieToDataFork, reference, type, "TVOD"_4cc, -1,
                            createMovieFileDontCreateMovie);
  ASSERT_EQ(GetMoviesError(), noErr);
}

TEST(ImageDescriptions, OfOtherProgramsAreReadChangedAndReadByThem) {
  const TemporaryFolder folder;
  RunFfmpeg({"-f",
             "lavfi",
             "-i",
             "testsrc=s=720x576:d=0.2",
             "-c:v",
             "mpeg4",
             "-flags",
             "+ilme+ildct",
             "-top",
             "1",
             "-aspect",
             "16:9",
             "-color_primaries",
             "bt470bg",
             "-color_trc",
             "bt709",
             "-colorspace",
             "bt470bg",
             "-movflags",
             "+write_colr",
             (folder / "in.mov").string()});
  FSRef file{};
  ASSERT_EQ(quillmere::files::ReferenceOf(folder / "in.mov", &file), noErr);
  Movie movie = nullptr;
  ASSERT_EQ(QT_OpenMovieFileFP(&file, 0, nullptr, &movie), noErr);
  const Media media = GetTrackMedia(GetMovieIndTrack(movie, 1));
  Boolean has = 0, is_nclc = 0;
  QT_Pasp pasp = {};
  const QT_Pasp wide = {64, 45};
  EXPECT_EQ(QT_GetPaspFromMedia(media, &has, &pasp), noErr);
  EXPECT_TRUE(has && QT_EqualPasp(&pasp, &wide)) << pasp.hSpacing << ':' << pasp.vSpacing;
  QT_Nclc nclc = {};
  CFDataRef profile = nullptr;
  EXPECT_EQ(QT_GetColrFromMedia(media, &has, &is_nclc, &nclc, &profile), noErr);
  EXPECT_TRUE(has && is_nclc && profile == nullptr);
  EXPECT_EQ(nclc.primaries, 5);
  EXPECT_EQ(nclc.transferFunction, 1);
  QT_Clap clap = {};
  EXPECT_EQ(QT_GetClapFromMedia(media, &has, &clap), noErr);
  EXPECT_FALSE(has);
  EXPECT_NE(QT_GetIndexedClapFromMedia(media, 2, &has, &clap), noErr);

  const OwnedHandle description(NewHandle(0));
  GetMediaSampleDescription(media, 1, description.get());
  ASSERT_EQ(GetMoviesError(), noErr);
  pasp = {59, 54};
  clap = {702, 1, 540, 1, 0, 1, 0, 1};
  nclc = {kQT_NclcType, 1, 1, 1};
  const QT_Fiel fiel = {2, 14};
  EXPECT_EQ(QT_SetPaspInImageDesc(description.get(), &pasp), noErr);
  EXPECT_EQ(QT_SetClapInImageDesc(description.get(), &clap), noErr);
  EXPECT_EQ(QT_SetNclcInImageDesc(description.get(), &nclc), noErr);
  EXPECT_EQ(QT_SetFielInImageDesc(description.get(), &fiel), noErr);
  ASSERT_EQ(SetMediaSampleDescription(media, 1, description.get()), noErr);
  Boolean equivalent = 0;
  EXPECT_EQ(QT_AreAllImageDescsEquivalent(media, nullptr, &equivalent), noErr);
  EXPECT_TRUE(equivalent);
  FlattenTo(movie, folder / "out.mov");
  DisposeMovie(movie);

  const std::string told = RunOrFail(
      {"ffprobe", "-v", "error", "-show_entries",
       "stream=sample_aspect_ratio,field_order,color_primaries,color_transfer,color_space",
       (folder / "out.mov").string()});
  for (const char* line : {"sample_aspect_ratio=59:54", "field_order=bt", "color_primaries=bt709",
                           "color_transfer=bt709", "color_space=bt709"})
    EXPECT_NE(told.find(line), std::string::npos) << line << '\n' << told;
  const std::string info = RunOrFail(
      {"mediainfo",
       "--Output=Video;%Width_CleanAperture%x%Height_CleanAperture% %matrix_coefficients%",
       (folder / "out.mov").string()});
  EXPECT_NE(info.find("702x540"), std::string::npos) << info;
  EXPECT_NE(info.find("BT.709"), std::string::npos) << info;
}

}  // namespace
