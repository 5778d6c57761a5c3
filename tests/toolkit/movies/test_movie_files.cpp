#include <cstring>
#include <string>
#include <vector>

#include "GL_File.h"
#include "LL_Linked_Lists.h"
#include "QT_Movie_File.h"
#include "QT_Movie_Info.h"
#include "memory_handles.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

FSRef ReferenceTo(const std::filesystem::path& path) {
  FSRef reference = {};
  EXPECT_EQ(files::ReferenceOf(path, &reference), noErr);
  return reference;
}

/// Names of the movies that the folder's list holds.
std::vector<std::string> ListedMovies(const std::filesystem::path& folder, Boolean importer_flag,
                                      Boolean require_moov) {
  const FSRef reference = ReferenceTo(folder);
  GL_FileObjectElement* list = nullptr;
  EXPECT_EQ(QT_MakeFolderMovieFileList(&reference, &list, importer_flag, require_moov), noErr);
  std::vector<std::string> names;
  for (const GL_FileObjectElement* element = list; element != nullptr; element = element->next) {
    std::filesystem::path path;
    EXPECT_EQ(files::PathOf(element->fileRef, &path), noErr);
    names.push_back(path.filename().string());
  }
  LL_DisposeLinkedList(ListHead(&list));
  return names;
}

TEST(MovieFiles, FolderListHoldsMoviesAndNoStills) {
  const TemporaryFolder folder;
  RunFfmpeg(
      {"-f", "lavfi", "-i", "testsrc=s=32x24:d=1", "-c:v", "mjpeg", (folder / "b.MOV").string()});
  RunFfmpeg(
      {"-f", "lavfi", "-i", "testsrc=s=32x24", "-frames:v", "1", (folder / "still.png").string()});
  std::filesystem::copy_file(folder / "b.MOV", folder / "a.mp4");
  std::filesystem::copy_file(folder / "b.MOV", folder / "bare");
  std::filesystem::copy_file(folder / "b.MOV", folder / "movie.dat");
  std::filesystem::copy_file(folder / "still.png", folder / "picture");
  std::filesystem::create_directory(folder / "folder.mov");
  WriteFile(folder / "notes.txt", "text");
  WriteFile(folder / "zz", "text");

  EXPECT_EQ(ListedMovies(folder.path(), 1, 0),
            (std::vector<std::string>{"a.mp4", "b.MOV", "bare"}));
  EXPECT_EQ(ListedMovies(folder.path(), 1, 1), (std::vector<std::string>{"b.MOV"}));
  EXPECT_EQ(ListedMovies(folder.path(), 0, 0),
            (std::vector<std::string>{"a.mp4", "b.MOV", "bare", "movie.dat"}));
}

TEST(MovieFiles, ImageReferenceCoversTheFile) {
  const TemporaryFolder folder;
  RunFfmpeg({"-f", "lavfi", "-i", "color=red@0.5:s=40x30,format=rgba", "-frames:v", "1",
             (folder / "mask.png").string()});
  WriteFile(folder / "bad.png", "no picture");
  FSRef file = ReferenceTo(folder / "mask.png");
  ImageDescriptionHandle description = nullptr;
  UInt32 offset = 1;
  UInt32 size = 0;
  ASSERT_EQ(QT_GetImageReferenceFromFile(&file, &description, &offset, &size), noErr);
  EXPECT_EQ(offset, 0U);
  EXPECT_EQ(size, std::filesystem::file_size(folder / "mask.png"));
  ASSERT_EQ(GetHandleSize(description), 86);
  const auto field = [&](std::size_t at) {
    UInt16 value = 0;
    std::memcpy(&value, *description + at, sizeof value);
    return value;
  };
  EXPECT_EQ(field(32), 40);
  EXPECT_EQ(field(34), 30);
  EXPECT_EQ(field(82), 32);
  DisposeHandle(description);

  file = ReferenceTo(folder / "bad.png");
  EXPECT_NE(QT_GetImageReferenceFromFile(&file, &description, &offset, &size), noErr);
  EXPECT_EQ(description, nullptr);
}

TEST(MovieFiles, OpensActiveAndTellsItsState) {
  const TemporaryFolder folder;
  RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=32x24:d=1", "-c:v", "mjpeg", "-aspect", "2:1",
             (folder / "a.mov").string()});
  const FSRef file = ReferenceTo(folder / "a.mov");
  Movie movie = nullptr;
  ASSERT_EQ(QT_OpenMovieFileFP(&file, QT_OpenMovieActive, nullptr, &movie), noErr);
  EXPECT_TRUE(GetMovieActive(movie));
  EXPECT_FLOAT_EQ(QT_GetMovieDurationInSec(movie), 1.0F);
  SInt16 front = 0;
  SInt16 back = 0;
  SetTrackLayer(GetMovieIndTrack(movie, 1), -7);
  QT_GetMinMaxLayer(movie, &front, &back);
  EXPECT_EQ(front, -7);
  EXPECT_EQ(back, -7);
  OSType mode = 0;
  EXPECT_EQ(QT_SetMovieApertureMode(movie, "clea"_4cc), noErr);
  EXPECT_EQ(QT_GetMovieApertureMode(movie, &mode), noErr);
  EXPECT_EQ(mode, "clea"_4cc);
  EXPECT_EQ(QT_SetMovieApertureMode(movie, "none"_4cc), paramErr);
  SInt32 width = 0;
  SInt32 height = 0;
  QT_GetMovieFrameSize(movie, &width, &height);
  EXPECT_EQ(width, 48);  // the pixel aspect of 3:2 is part of the clean aperture
  EXPECT_EQ(height, 24);
  QT_DisposeMovie(&movie);
  EXPECT_EQ(movie, nullptr);
}

}  // namespace
}  // namespace quillmere::test
