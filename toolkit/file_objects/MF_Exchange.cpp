#include <span>
#include <utility>

#include "MF_FileObjects.h"
#include "MF_Volumes.h"
#include "MF_trace_private.h"
#include "creation.h"
#include "file_copies.h"
#include "moves.h"

using quillmere::file_objects::Checked;
using quillmere::file_objects::kCatalogFailed;
using quillmere::file_objects::kSetCatalogFailed;
using quillmere::file_objects::Trace;

namespace {

/// Where the names for objects on their way start; any number does.
constexpr UInt32 kSeed = 0x5165B3A1;
constexpr const char kRenameFailed[] = "FSRenameUnicode failed";
constexpr const char kMoveFailed[] = "FSMoveObject failed";

/// What the exchange sets at once, all but the dates of change; its rollback sets all.
constexpr FSCatalogInfoBitmap kExchangedInfo =
    kFSCatInfoSettableInfo & ~(kFSCatInfoContentMod | kFSCatInfoAttrMod);
constexpr FSCatalogInfoBitmap kReadInfo =
    kFSCatInfoSettableInfo | kFSCatInfoVolume | kFSCatInfoParentDirID;

SInt32 Rename(FSRef* object, const HFSUniStr255& name, TextEncoding encoding) {
  return Checked(FSRenameUnicode(object, name.length, name.unicode, encoding, object),
                 kRenameFailed);
}

SInt32 MoveInto(FSRef* object, const FSRef& folder) {
  return Checked(FSMoveObject(object, &folder, object), kMoveFailed);
}

/// One of two files that are exchanged.
struct Side {
  FSRef object;  ///< follows it
  FSCatalogInfo info;
  HFSUniStr255 name;
  HFSUniStr255 unique_name;
  FSRef parent;

  SInt32 Read() {
    return Checked(FSGetCatalogInfo(&object, kReadInfo, &info, &name, nullptr, &parent),
                   kCatalogFailed);
  }
  SInt32 Set(FSCatalogInfoBitmap mask, const FSCatalogInfo& wanted) {
    return Checked(FSSetCatalogInfo(&object, mask, &wanted), kSetCatalogFailed);
  }
  void RenameToOwn() { Rename(&object, name, info.textEncodingHint); }
};

/// The exchange by renaming and moving both files.
class CompatibleExchange {
 public:
  CompatibleExchange(const FSRef& source, const FSRef& destination) {
    source_.object = source;
    destination_.object = destination;
  }

  SInt32 Prepare() {
    SInt32 status = source_.Read();
    if (!status) status = destination_.Read();
    if (status) return status;
    if (source_.info.volume != destination_.info.volume) return diffVolErr;
    if ((source_.info.nodeFlags | destination_.info.nodeFlags) & kFSNodeIsDirectoryMask) {
      return notAFileErr;
    }
    has_one_parent_ = FSCompareFSRefs(&source_.parent, &destination_.parent) == noErr;
    UInt32 seed = kSeed;
    status = MF_GenerateUniqueHFSUniStr(&seed, &source_.parent, &destination_.parent,
                                        &source_.unique_name);
    if (status) return status;
    return MF_GenerateUniqueHFSUniStr(&seed, &source_.parent, &destination_.parent,
                                      &destination_.unique_name);
  }

  /// A failure puts everything back.
  SInt32 Run() {
    std::size_t done = 0;
    for (const auto step : kSteps) {
      const SInt32 status = (this->*step)();
      if (status) {
        RollBack(done);
        return status;
      }
      ++done;
    }
    return noErr;
  }

  const FSRef& source() const { return source_.object; }
  const FSRef& destination() const { return destination_.object; }

 private:
  using Step = SInt32 (CompatibleExchange::*)();
  using UndoStep = void (CompatibleExchange::*)();

  SInt32 RenameSource() {
    return Rename(&source_.object, source_.unique_name, kTextEncodingUnknown);
  }
  SInt32 RenameDestination() {
    return Rename(&destination_.object, destination_.unique_name, kTextEncodingUnknown);
  }
  SInt32 MoveSource() {
    return has_one_parent_ ? SInt32{noErr} : MoveInto(&source_.object, destination_.parent);
  }
  SInt32 MoveDestination() {
    return has_one_parent_ ? SInt32{noErr} : MoveInto(&destination_.object, source_.parent);
  }
  SInt32 SetSource() { return source_.Set(kExchangedInfo, destination_.info); }
  SInt32 SetDestination() { return destination_.Set(kExchangedInfo, source_.info); }
  SInt32 NameSource() {
    return Rename(&source_.object, destination_.name, destination_.info.textEncodingHint);
  }
  SInt32 NameDestination() {
    return Rename(&destination_.object, source_.name, source_.info.textEncodingHint);
  }

  void UnnameSource() { RenameSource(); }
  void RestoreDestination() { destination_.Set(kFSCatInfoSettableInfo, destination_.info); }
  void RestoreSource() { source_.Set(kFSCatInfoSettableInfo, source_.info); }
  void ReturnDestination() {
    if (!has_one_parent_) MoveInto(&destination_.object, destination_.parent);
  }
  void ReturnSource() {
    if (!has_one_parent_) MoveInto(&source_.object, source_.parent);
  }
  void RenameDestinationBack() { destination_.RenameToOwn(); }
  void RenameSourceBack() { source_.RenameToOwn(); }

  static constexpr Step kSteps[] = {
      &CompatibleExchange::RenameSource, &CompatibleExchange::RenameDestination,
      &CompatibleExchange::MoveSource,   &CompatibleExchange::MoveDestination,
      &CompatibleExchange::SetSource,    &CompatibleExchange::SetDestination,
      &CompatibleExchange::NameSource,   &CompatibleExchange::NameDestination};
  /// What undoes the steps from the last but one to the first.
  static constexpr UndoStep kUndoSteps[] = {
      &CompatibleExchange::UnnameSource,    &CompatibleExchange::RestoreDestination,
      &CompatibleExchange::RestoreSource,   &CompatibleExchange::ReturnDestination,
      &CompatibleExchange::ReturnSource,    &CompatibleExchange::RenameDestinationBack,
      &CompatibleExchange::RenameSourceBack};

  void RollBack(std::size_t steps_done) {
    for (const auto step : std::span(kUndoSteps).last(steps_done))
      (this->*step)();
  }

  Side source_{};
  Side destination_{};
  bool has_one_parent_ = false;
};

/// Whether the volume of an object has a bit in its attributes, which only a version from
/// `first_version` on holds.
bool VolumeHas(FSVolumeRefNum volume, SInt32 GetVolParmsInfoBuffer::*attributes, SInt32 bit,
               SInt16 first_version) {
  GetVolParmsInfoBuffer parameters{};
  return MF_FSGetVolParms(volume, sizeof(parameters), &parameters, nullptr) == noErr &&
         parameters.vMVersion >= first_version && (parameters.*attributes & bit) != 0;
}

SInt32 CheckVolume(const FSRef* reference, SInt32 attribute) {
  FSVolumeRefNum volume = 0;
  const SInt32 status = MF_FSGetVRefNum(reference, &volume);
  if (status) return status;
  return VolumeHas(volume, &GetVolParmsInfoBuffer::vMAttrib, attribute, 1) ? noErr : paramErr;
}

}  // namespace

SInt32 MF_GenerateUniqueHFSUniStr(UInt32* seed, const FSRef* folder1, const FSRef* folder2,
                                  HFSUniStr255* name) {
  const Trace trace("MF_GenerateUniqueHFSUniStr");
  if (!seed || !folder1 || !folder2 || !name) return paramErr;
  constexpr UInt16 kDigits = 8;
  for (;;) {
    name->length = kDigits;
    for (UInt32 i = 0; i < kDigits; ++i)
      name->unicode[i] = u"0123456789ABCDEF"[(*seed >> (28 - 4 * i)) & 0xF];
    SInt32 status = noErr;
    for (const FSRef* folder : {folder1, folder2}) {
      FSRef ignored;
      status =
          FSMakeFSRefUnicode(folder, name->length, name->unicode, kTextEncodingUnknown, &ignored);
      if (status == noErr) break;
      if (status != fnfErr) return Checked(status, "PBMakeFSRefUnicodeSync failed");
    }
    ++*seed;
    if (status == fnfErr) return noErr;
  }
}

SInt32 MF_FSExchangeObjectsCompat(const FSRef* source, const FSRef* destination, FSRef* new_source,
                                  FSRef* new_destination) {
  const Trace trace("MF_FSExchangeObjectsCompat");
  if (!source || !destination || !new_source || !new_destination) return paramErr;
  const FSRef first = *source;
  const FSRef second = *destination;
  *new_source = first;
  *new_destination = second;
  FSVolumeRefNum volume = 0;
  SInt32 status = MF_FSGetVRefNum(&first, &volume);
  if (status) return status;
  constexpr SInt16 kFirstWithExtended = 3;
  if (VolumeHas(volume, &GetVolParmsInfoBuffer::vMExtendedAttributes, kSupportsExchangeFiles,
                kFirstWithExtended)) {
    return Checked(FSExchangeObjects(&first, &second), "FSExchangeObjects failed");
  }
  CompatibleExchange exchange(first, second);
  status = exchange.Prepare();
  if (!status) status = exchange.Run();
  if (status) return status;
  *new_source = exchange.destination();
  *new_destination = exchange.source();
  return noErr;
}

SInt32 MF_FSMoveRenameObjectUnicode(const FSRef* reference, const FSRef* destination, UInt32 length,
                                    const UniChar* name, TextEncoding encoding,
                                    FSRef* new_reference) {
  const Trace trace("MF_FSMoveRenameObjectUnicode");
  if (!reference || !destination || !new_reference) return paramErr;
  FSRef object = *reference;
  const FSRef folder = *destination;
  *new_reference = object;
  FSVolumeRefNum volume = 0;
  SInt32 status = MF_FSGetVRefNum(&folder, &volume);
  FSCatalogInfo info{};
  HFSUniStr255 old_name;
  FSRef old_parent;
  if (!status) {
    status = Checked(FSGetCatalogInfo(&object, kFSCatInfoVolume | kFSCatInfoTextEncoding, &info,
                                      &old_name, nullptr, &old_parent),
                     kCatalogFailed);
  }
  if (status) return status;
  if (info.volume != volume) return diffVolErr;
  if (!name || length == 0) {
    return Checked(FSMoveObject(&object, &folder, new_reference), kMoveFailed);
  }
  UInt32 seed = kSeed;
  HFSUniStr255 unique_name;
  status = MF_GenerateUniqueHFSUniStr(&seed, &old_parent, &folder, &unique_name);
  if (!status) status = Rename(&object, unique_name, kTextEncodingUnknown);
  if (status) return status;
  status = MoveInto(&object, folder);
  if (!status) {
    status = Checked(FSRenameUnicode(&object, length, name, encoding, &object), kRenameFailed);
    if (status) MoveInto(&object, old_parent);
  }
  if (status) Rename(&object, old_name, info.textEncodingHint);
  *new_reference = object;
  return status;
}

SInt32 MF_FSMoveRename(const FSRef* reference, const FSRef* destination, UInt32 length,
                       const UniChar* name, TextEncoding encoding, FSRef* new_reference) {
  const Trace trace("MF_FSMoveRename");
  const SInt32 status = CheckVolume(reference, kHasMoveRename);
  return status ? status
                : Checked(PBHMoveRenameSync(reference, destination, length, name, encoding,
                                            new_reference),
                          "PBHMoveRenameSync failed");
}

SInt32 MF_FSCopyFile(const FSRef* source, const FSRef* destination, UInt32 length,
                     const UniChar* name, TextEncoding encoding, FSRef* new_reference) {
  const Trace trace("MF_FSCopyFile");
  const SInt32 status = CheckVolume(source, kHasCopyFile);
  return status
             ? status
             : Checked(PBHCopyFileSync(source, destination, length, name, encoding, new_reference),
                       "PBHCopyFileSync failed");
}
