#include "catalogue_changes.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "catalogue_record.h"
#include "file_calls.h"
#include "finder_information.h"

namespace quillmere::files {
namespace {

constexpr mode_t kWritePermissions = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kPermissions = 07777;

timespec TimeOf(const struct statx_timestamp& time) {
  return {time.tv_sec, static_cast<long>(time.tv_nsec)};
}

/// The time of a date, or none where the object has that date already: its own time is finer.
timespec TimeFor(const UTCDateTime& date, const struct statx_timestamp& present) {
  if (date == DateOfUnixTime(present.tv_sec, present.tv_nsec)) return {0, UTIME_OMIT};
  SInt64 seconds = 0;
  SInt64 nanoseconds = 0;
  UnixTimeOfDate(date, &seconds, &nanoseconds);
  return {seconds, static_cast<long>(nanoseconds)};
}

/// One change of an object after the other. What was done is undone unless all was kept.
class Changes {
 public:
  explicit Changes(const ObjectPlace& place)
      : place_(place),
        attribute_path_(AttributePath(place.folder.get(), place.name)),
        mode_(place.info.stx_mode & kPermissions),
        first_mode_(mode_) {}
  Changes(const Changes&) = delete;
  Changes& operator=(const Changes&) = delete;
  ~Changes() {
    for (auto undo = undos_.rbegin(); undo != undos_.rend(); ++undo)
      (*undo)();
  }
  void Keep() { undos_.clear(); }

  const std::string& attribute_path() const { return attribute_path_; }
  mode_t mode() const { return mode_; }

  OSStatus Mode(mode_t mode) {
    if (mode == mode_) return noErr;
    if (SetMode(place_.folder.get(), place_.name, mode) != 0) return StatusOfErrno(errno);
    undos_.emplace_back([this, old = mode_] { SetMode(place_.folder.get(), place_.name, old); });
    mode_ = mode;
    return noErr;
  }

  OSStatus Finder(const FinderInformation& wanted) {
    FinderInformation old;
    ReadFinderInformation(attribute_path_, &old);
    if (std::memcmp(old.bytes, wanted.bytes, sizeof(old.bytes)) == 0) return noErr;
    OSStatus status = OpenForAttributes();
    if (!status) status = WriteFinderInformation(attribute_path_, wanted);
    if (!status) {
      undos_.emplace_back([this, old] { WriteFinderInformation(attribute_path_, old); });
    }
    return status;
  }

  OSStatus Record(const CatalogueRecord& old, const CatalogueRecord& wanted) {
    if (old == wanted) return noErr;
    OSStatus status = OpenForAttributes();
    if (!status) status = WriteCatalogueRecord(attribute_path_, wanted);
    if (!status) undos_.emplace_back([this, old] { WriteCatalogueRecord(attribute_path_, old); });
    return status;
  }

  OSStatus Owner(const FSPermissionInfo& wanted) {
    const uid_t owner = place_.info.stx_uid;
    const gid_t group = place_.info.stx_gid;
    if (geteuid() != 0 || (wanted.userID == owner && wanted.groupID == group)) return noErr;
    if (SetOwner(place_.folder.get(), place_.name, wanted.userID, wanted.groupID) != 0) {
      return StatusOfErrno(errno);
    }
    mode_ &= ~mode_t{S_ISUID | S_ISGID};  // as the system does
    undos_.emplace_back([this, owner, group] {
      SetOwner(place_.folder.get(), place_.name, owner, group);
      SetMode(place_.folder.get(), place_.name, first_mode_);
    });
    return noErr;
  }

  OSStatus Times(const timespec (&times)[2]) {
    if (times[0].tv_nsec == UTIME_OMIT && times[1].tv_nsec == UTIME_OMIT) return noErr;
    if (SetTimes(place_.folder.get(), place_.name, times) != 0) return StatusOfErrno(errno);
    undos_.emplace_back([this] {
      SetTimes(place_.folder.get(), place_.name,
               {TimeOf(place_.info.stx_atime), TimeOf(place_.info.stx_mtime)});
    });
    return noErr;
  }

 private:
  /// The attributes of an object that is read-only for its owner can't be written.
  OSStatus OpenForAttributes() { return Mode(mode_ | S_IWUSR); }

  const ObjectPlace& place_;
  std::string attribute_path_;
  mode_t mode_;
  mode_t first_mode_;
  std::vector<std::function<void()>> undos_;
};

/// The mode and record that permissions and lock of `info` ask for.
mode_t WantedMode(const struct statx& present, FSCatalogInfoBitmap mask, const FSCatalogInfo& info,
                  CatalogueRecord* record) {
  mode_t mode = mask & kFSCatInfoPermissions ? info.permissions.mode & kPermissions
                                             : present.stx_mode & kPermissions;
  if (!(mask & kFSCatInfoNodeFlags)) return mode;
  const mode_t writing = mode & kWritePermissions;
  if (info.nodeFlags & kFSNodeLockedMask) {
    if (writing) record->write_permissions = static_cast<UInt16>(writing);
    return mode & ~kWritePermissions;
  }
  if (writing == 0) mode |= S_IWUSR | (record->write_permissions & kWritePermissions);
  record->write_permissions = 0;
  return mode;
}

CatalogueRecord WantedRecord(const struct statx& present, const CatalogueRecord& old,
                             FSCatalogInfoBitmap mask, const FSCatalogInfo& info) {
  CatalogueRecord record = old;
  if (mask & kFSCatInfoTextEncoding) record.text_encoding = info.textEncodingHint;
  if (mask & kFSCatInfoBackupDate) record.backup_date = info.backupDate;
  if (mask & kFSCatInfoCreateDate) {
    const bool is_own =
        (present.stx_mask & STATX_BTIME) &&
        info.createDate == DateOfUnixTime(present.stx_btime.tv_sec, present.stx_btime.tv_nsec);
    record.create_date = is_own ? UTCDateTime{} : info.createDate;
  }
  record.attribute_date = mask & kFSCatInfoAttrMod ? info.attributeModDate : UTCDateTime{};
  record.attribute_date_set = {};
  if (record.attribute_date != UTCDateTime{}) GetUTCDateTime(&record.attribute_date_set, 0);
  return record;
}

OSStatus SetFinder(FSCatalogInfoBitmap mask, const FSCatalogInfo& info, Changes* changes) {
  if (!(mask & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo))) return noErr;
  FinderInformation finder;
  ReadFinderInformation(changes->attribute_path(), &finder);
  if (mask & kFSCatInfoFinderInfo) std::memcpy(finder.bytes, info.finderInfo, 16);
  if (mask & kFSCatInfoFinderXInfo) std::memcpy(finder.bytes + 16, info.extFinderInfo, 16);
  return changes->Finder(finder);
}

}  // namespace

OSStatus SetCatalogue(const ObjectPlace& place, FSCatalogInfoBitmap mask,
                      const FSCatalogInfo& info) {
  Changes changes(place);
  OSStatus status = noErr;
  // A link has no permissions and no attributes.
  if (!place.IsLink()) {
    const CatalogueRecord old = ReadCatalogueRecord(changes.attribute_path());
    CatalogueRecord record = WantedRecord(place.info, old, mask, info);
    const mode_t mode = WantedMode(place.info, mask, info, &record);
    status = SetFinder(mask, info, &changes);
    if (!status) status = changes.Record(old, record);
    if (!status && (mask & kFSCatInfoPermissions)) status = changes.Owner(info.permissions);
    if (!status) status = changes.Mode(mode);
  }
  const timespec times[2] = {
      mask & kFSCatInfoAccessDate ? TimeFor(info.accessDate, place.info.stx_atime)
                                  : timespec{0, UTIME_OMIT},
      mask & kFSCatInfoContentMod ? TimeFor(info.contentModDate, place.info.stx_mtime)
                                  : timespec{0, UTIME_OMIT}};
  if (!status) status = changes.Times(times);
  if (!status) changes.Keep();
  return status;
}

}  // namespace quillmere::files
