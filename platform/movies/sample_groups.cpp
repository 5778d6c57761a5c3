#include "sample_groups.h"

#include <algorithm>
#include <set>
#include <utility>

#include "big_endian.h"
#include "field_reader.h"

namespace quillmere::movies {

namespace {

/// In a fragment's `sbgp`, indices above this number the fragment's own descriptions.
constexpr UInt32 kOwnDescriptions = 0x10000;

/// The type and parameter that an `sbgp` is about, with its entries still to be read.
struct MembershipTable {
  OSType type = 0;
  std::optional<UInt32> parameter;
  UInt32 flags = 0;
  UInt32 count = 0;
  FieldReader entries{{}};
};

bool ReadMembershipTable(const Atom& sbgp, MembershipTable* table) {
  FieldReader fields(sbgp.payload());
  const UInt32 version_and_flags = fields.U32();
  table->flags = version_and_flags & 0xFFFFFF;
  table->type = fields.U32();
  if (version_and_flags >> 24 == 1) table->parameter = fields.U32();
  table->count = fields.U32();
  table->entries = fields;
  return fields.ok() && version_and_flags >> 24 <= 1 && fields.left() / 8 >= table->count;
}

/// The child of a type that is about that grouping; null if there is none or it is damaged.
const Atom* FindMembership(const Atom& parent, OSType type, std::optional<UInt32> parameter) {
  for (const Atom& atom : parent.children()) {
    MembershipTable table;
    if (atom.type() == "sbgp"_4cc && ReadMembershipTable(atom, &table) && table.type == type &&
        table.parameter == parameter) {
      return &atom;
    }
  }
  return nullptr;
}

const Atom* FindDescriptions(const Atom& parent, OSType type) {
  for (const Atom& atom : parent.children()) {
    if (atom.type() == "sgpd"_4cc && atom.payload().size() >= 8 &&
        ReadU32(atom.payload().data() + 4) == type) {
      return &atom;
    }
  }
  return nullptr;
}

/// Puts a table into the place of an older one, or at the end.
void PutTable(const Atom* old, OSType type, std::vector<UInt8> bytes, Atom* stbl) {
  const auto place = std::find_if(stbl->children().begin(), stbl->children().end(),
                                  [old](const Atom& atom) { return &atom == old; });
  Atom& table = place != stbl->children().end() ? *place : stbl->Add(Atom(type));
  table.set_payload(std::move(bytes));
}

}  // namespace

void SampleGroupMerger::Start(const Atom* stbl, UInt64 samples) {
  stbl_ = stbl;
  old_samples_ = samples;
}

bool SampleGroupMerger::ReadDescriptions(const Atom& sgpd, OSType* type,
                                         Descriptions* descriptions) {
  FieldReader fields(sgpd.payload());
  const UInt32 version_and_flags = fields.U32();
  const UInt32 version = version_and_flags >> 24;
  descriptions->flags = version_and_flags & 0xFFFFFF;
  *type = fields.U32();
  UInt32 length = version >= 1 ? fields.U32() : 0;
  descriptions->default_index = version >= 2 ? fields.U32() : 0;
  const UInt32 count = fields.U32();
  if (!fields.ok() || version > 2 || descriptions->default_index > count) return false;
  if (version == 0 && count > 0) {
    // Version 0 does not tell lengths: its descriptions are those types that have one.
    if (fields.left() % count != 0) return false;
    length = static_cast<UInt32>(fields.left() / count);
    if (length == 0) return false;
  }
  for (UInt32 i = 0; i < count; ++i) {
    const UInt32 own_length = length != 0 ? length : fields.U32();
    const std::span<const UInt8> bytes = fields.Bytes(own_length);
    if (!fields.ok()) return false;
    descriptions->list.emplace_back(bytes.begin(), bytes.end());
    descriptions->indices.emplace(descriptions->list.back(), i + 1);
  }
  return true;
}

/// The track's descriptions of a type, read at the first use; null when they are damaged.
SampleGroupMerger::Descriptions* SampleGroupMerger::DescriptionsOf(OSType type) {
  const auto known = descriptions_.find(type);
  if (known != descriptions_.end()) return &known->second;
  Descriptions descriptions;
  const Atom* old = FindDescriptions(*stbl_, type);
  OSType same = 0;
  if (old != nullptr && !ReadDescriptions(*old, &same, &descriptions)) return nullptr;
  return &descriptions_.emplace(type, std::move(descriptions)).first->second;
}

void SampleGroupMerger::FillUp(UInt64 samples, UInt32 value, Membership* membership) {
  if (samples <= membership->samples) return;
  AppendRun(&membership->runs, static_cast<UInt32>(samples - membership->samples), value);
  membership->samples = samples;
}

/// The groups of the samples up to now, with those that the track had; null when they are damaged.
SampleGroupMerger::Membership* SampleGroupMerger::MembershipOf(const Grouping& grouping) {
  const auto known = memberships_.find(grouping);
  if (known != memberships_.end()) return &known->second;
  const Descriptions* descriptions = DescriptionsOf(grouping.first);
  if (descriptions == nullptr) return nullptr;
  Membership membership;
  const Atom* old = FindMembership(*stbl_, grouping.first, grouping.second);
  MembershipTable table;
  if (old != nullptr && ReadMembershipTable(*old, &table)) {
    membership.flags = table.flags;
    for (UInt32 i = 0; i < table.count; ++i) {
      const UInt32 count = table.entries.U32();
      const UInt32 index = table.entries.U32();
      if (index > descriptions->list.size()) return nullptr;
      FillUp(std::min(membership.samples + count, old_samples_), index, &membership);
    }
  }
  FillUp(old_samples_, descriptions->default_index, &membership);
  return &memberships_.emplace(grouping, std::move(membership)).first->second;
}

/// The indices among the track's descriptions of a fragment's own ones; new ones are appended.
bool SampleGroupMerger::MapDescriptions(OSType type, const Descriptions& own,
                                        std::vector<UInt32>* mapped) {
  Descriptions* all = DescriptionsOf(type);
  if (all == nullptr) return false;
  for (const Description& description : own.list) {
    const auto next = static_cast<UInt32>(all->list.size() + 1);
    const auto [place, is_new] = all->indices.emplace(description, next);
    if (is_new) {
      if (next > kOwnDescriptions) return false;
      all->list.push_back(description);
      all->has_grown = true;
    }
    mapped->push_back(place->second);
  }
  return true;
}

/// Takes one table of a fragment; without a table its samples have the default of their type.
bool SampleGroupMerger::AddMembership(const Atom& traf, const Grouping& grouping, const Atom* sbgp,
                                      UInt64 first, UInt64 end) {
  Descriptions own;
  OSType type = 0;
  const Atom* sgpd = FindDescriptions(traf, grouping.first);
  if (sgpd != nullptr && !ReadDescriptions(*sgpd, &type, &own)) return false;
  std::vector<UInt32> mapped;
  if (!MapDescriptions(grouping.first, own, &mapped)) return false;
  Membership* membership = MembershipOf(grouping);
  if (membership == nullptr || membership->samples > first) return false;
  const Descriptions& all = *DescriptionsOf(grouping.first);
  FillUp(first, all.default_index, membership);
  MembershipTable table;
  if (sbgp != nullptr && !ReadMembershipTable(*sbgp, &table)) return false;
  if (membership->flags == 0) membership->flags = table.flags;
  for (UInt32 i = 0; i < table.count; ++i) {
    const UInt32 count = table.entries.U32();
    UInt32 index = table.entries.U32();
    if (index > kOwnDescriptions) {
      index -= kOwnDescriptions;
      if (index > mapped.size()) return false;
      index = mapped[index - 1];
    }
    if (index > all.list.size() || count > end - membership->samples) return false;
    FillUp(membership->samples + count, index, membership);
  }
  FillUp(end, own.default_index != 0 ? mapped[own.default_index - 1] : all.default_index,
         membership);
  return true;
}

bool SampleGroupMerger::Add(const Atom& traf, UInt64 first, UInt64 end) {
  std::set<OSType> told;
  for (const Atom& atom : traf.children()) {
    if (atom.type() != "sbgp"_4cc) continue;
    MembershipTable table;
    if (!ReadMembershipTable(atom, &table)) return false;
    if (!AddMembership(traf, {table.type, table.parameter}, &atom, first, end)) return false;
    told.insert(table.type);
  }
  for (const Atom& atom : traf.children()) {
    if (atom.type() != "sgpd"_4cc) continue;
    Descriptions own;
    OSType type = 0;
    if (!ReadDescriptions(atom, &type, &own)) return false;
    if (told.contains(type)) continue;
    // Descriptions that no sample has are kept too.
    std::vector<UInt32> mapped;
    if (own.default_index == 0 ? !MapDescriptions(type, own, &mapped)
                               : !AddMembership(traf, {type, {}}, nullptr, first, end)) {
      return false;
    }
  }
  return true;
}

void SampleGroupMerger::Write(UInt64 samples, Atom* stbl) {
  for (const auto& [type, descriptions] : descriptions_) {
    if (!descriptions.has_grown) continue;
    const std::vector<Description>& list = descriptions.list;
    const bool equal = std::all_of(list.begin(), list.end(), [&](const Description& one) {
      return one.size() == list.front().size();
    });
    const UInt32 length = equal ? static_cast<UInt32>(list.front().size()) : 0;
    const UInt32 version = descriptions.default_index != 0 ? 2 : 1;
    std::vector<UInt8> bytes;
    for (const UInt32 field : {(version << 24) | descriptions.flags, type, length})
      AppendU32(&bytes, field);
    if (version == 2) AppendU32(&bytes, descriptions.default_index);
    AppendU32(&bytes, static_cast<UInt32>(list.size()));
    for (const Description& one : list) {
      if (length == 0) AppendU32(&bytes, static_cast<UInt32>(one.size()));
      bytes.insert(bytes.end(), one.begin(), one.end());
    }
    PutTable(FindDescriptions(*stbl, type), "sgpd"_4cc, std::move(bytes), stbl);
  }
  for (auto& [grouping, membership] : memberships_) {
    FillUp(samples, DescriptionsOf(grouping.first)->default_index, &membership);
    std::vector<UInt8> bytes;
    AppendU32(&bytes, (grouping.second ? 0x01000000U : 0U) | membership.flags);
    AppendU32(&bytes, grouping.first);
    if (grouping.second) AppendU32(&bytes, *grouping.second);
    AppendU32(&bytes, static_cast<UInt32>(membership.runs.size()));
    for (const Run& run : membership.runs) {
      AppendU32(&bytes, run.count);
      AppendU32(&bytes, run.value);
    }
    PutTable(FindMembership(*stbl, grouping.first, grouping.second), "sbgp"_4cc, std::move(bytes),
             stbl);
  }
}

}  // namespace quillmere::movies
