/// Sample groups of fragmented movies: which samples belong together (`sbgp`), and what is said of
/// each group (`sgpd`).
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "atom.h"
#include "base_types.h"
#include "sample_runs.h"

namespace quillmere::movies {

/// Joins the sample groups of a track's fragments to those that its sample table has. A fragment's
/// own descriptions go behind those of the track; of equal ones there is one.
class SampleGroupMerger {
 public:
  /// The track's sample table, which has to stay as it is until Write, and its number of samples.
  void Start(const Atom* stbl, UInt64 samples);
  /// Takes the groups of one `traf` whose samples are `first` to `end`, from 0. False when they are
  /// damaged.
  bool Add(const Atom& traf, UInt64 first, UInt64 end);
  /// Writes the groups that fragments have into the sample table, which has now so many samples.
  void Write(UInt64 samples, Atom* stbl);

 private:
  using Description = std::vector<UInt8>;
  /// The descriptions of one grouping type, with their indices from 1.
  struct Descriptions {
    UInt32 flags = 0;
    UInt32 default_index = 0;  ///< of samples that no table maps; 0 for none
    std::vector<Description> list;
    std::map<Description, UInt32> indices;
    bool has_grown = false;
  };
  /// A grouping type and its parameter, if it has one.
  using Grouping = std::pair<OSType, std::optional<UInt32>>;
  /// The description of each sample, 0 for none.
  struct Membership {
    UInt32 flags = 0;
    std::vector<Run> runs;
    UInt64 samples = 0;  ///< that the runs tell of
  };

  static bool ReadDescriptions(const Atom& sgpd, OSType* type, Descriptions* descriptions);
  Descriptions* DescriptionsOf(OSType type);
  Membership* MembershipOf(const Grouping& grouping);
  bool MapDescriptions(OSType type, const Descriptions& own, std::vector<UInt32>* mapped);
  bool AddMembership(const Atom& traf, const Grouping& grouping, const Atom* sbgp, UInt64 first,
                     UInt64 end);
  static void FillUp(UInt64 samples, UInt32 value, Membership* membership);

  const Atom* stbl_ = nullptr;
  UInt64 old_samples_ = 0;
  std::map<OSType, Descriptions> descriptions_;
  std::map<Grouping, Membership> memberships_;
};

}  // namespace quillmere::movies
