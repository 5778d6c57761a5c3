/// Movies of one video track, made from plain lists of samples and edits.
#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "atom_builder.h"
#include "base_types.h"

namespace quillmere::test {

struct Sample {
  SInt64 begin, duration;
  UInt32 size;
  SInt64 offset;
};
struct Edit {
  SInt64 duration, media_time;
  SInt32 rate;
};

/// A movie of one track, as plain lists.
struct Model {
  SInt64 movie_scale, media_scale;
  std::vector<Sample> samples;
  std::vector<std::size_t> chunks;  ///< first sample of each
  std::vector<Edit> edits;

  SInt64 duration() const { return samples.back().begin + samples.back().duration; }
  /// The begins of the runs of chunks that adjoin.
  std::vector<SInt64> RunBegins() const {
    std::vector<SInt64> begins;
    for (const std::size_t first : chunks) {
      if (first == 0 ||
          samples[first - 1].offset + samples[first - 1].size != samples[first].offset)
        begins.push_back(samples[first].begin);
    }
    return begins;
  }
  std::vector<SInt64> SampleBegins() const {
    std::vector<SInt64> begins;
    for (const Sample& sample : samples)
      begins.push_back(sample.begin);
    return begins;
  }
};

template <class T>
T PickOne(std::initializer_list<T> list, std::mt19937* random) {
  return list.begin()[(*random)() % list.size()];
}

/// A model of random times, sizes, chunks and edits.
inline Model MakeModel(std::mt19937* random) {
  const auto number = [&](SInt64 low, SInt64 high) {
    return low + static_cast<SInt64>((*random)() % static_cast<UInt32>(high - low + 1));
  };
  Model model = {PickOne<SInt64>({600, 1000, 25, 30000}, random),
                 PickOne<SInt64>({600, 30000, 25, 44100, 2997}, random),
                 {},
                 {},
                 {}};
  SInt64 begin = 0, offset = 40, duration = 1;
  UInt32 size = 1;
  const SInt64 longest = std::max<SInt64>(model.media_scale / number(1, 25), 1);
  for (SInt64 i = 0, count = number(1, 30); i < count; ++i) {
    if (i == 0 || number(0, 3) == 0) duration = number(1, longest);
    if (i == 0 || number(0, 3) == 0) size = static_cast<UInt32>(number(1, 50));
    if (i == 0 || number(0, 4) == 0) {
      model.chunks.push_back(static_cast<std::size_t>(i));
      if (number(0, 1) == 0) offset += number(1, 30);
    }
    model.samples.push_back({begin, duration, size, offset});
    begin += duration;
    offset += size;
  }
  for (SInt64 i = 0, count = number(1, 5); i < count; ++i)
    model.edits.push_back({number(0, model.movie_scale),
                           number(0, 4) == 0 ? -1 : number(0, begin - 1),
                           PickOne({0x10000, 0x10000, 0x8000, 0x20000, 0x15555, 0}, random)});
  return model;
}

inline void PatchNumber(Bytes* file, const std::vector<std::string>& path, std::size_t offset,
                        SInt64 value) {
  Bytes atom = AtomBytes(*file, path);
  PutNumber(&atom, offset, static_cast<UInt64>(value), 4);
  ReplaceAtom(file, path, atom);
}

inline Bytes TableOf(std::string_view type, const std::vector<SInt64>& numbers,
                     std::size_t per_entry) {
  ByteWriter content;
  if (type == "stsz") content.U32(0);
  content.U32(numbers.size() / per_entry);
  for (const SInt64 number : numbers)
    content.U32(static_cast<UInt32>(number));
  return MakeFullAtom(type, 0, 0, content.bytes);
}

/// `file`, a movie of one video track, with the model's tables in the place of its own.
inline Bytes MovieOf(const Model& model, Bytes file) {
  constexpr std::size_t kScale = 20;  // of the header atoms of version 0, as is the duration
  constexpr std::size_t kDuration = 24;
  std::vector<SInt64> times, sizes, offsets, chunk_runs, edits;
  for (const Sample& sample : model.samples) {
    times.insert(times.end(), {1, sample.duration});
    sizes.push_back(sample.size);
  }
  for (std::size_t i = 0; i < model.chunks.size(); ++i) {
    const std::size_t end =
        i + 1 < model.chunks.size() ? model.chunks[i + 1] : model.samples.size();
    chunk_runs.insert(chunk_runs.end(),
                      {static_cast<SInt64>(i + 1), static_cast<SInt64>(end - model.chunks[i]), 1});
    offsets.push_back(model.samples[model.chunks[i]].offset);
  }
  for (const Edit& edit : model.edits)
    edits.insert(edits.end(), {edit.duration, edit.media_time, edit.rate});
  PatchNumber(&file, {"moov", "mvhd"}, kScale, model.movie_scale);
  PatchNumber(&file, {"moov", "trak", "mdia", "mdhd"}, kScale, model.media_scale);
  PatchNumber(&file, {"moov", "trak", "mdia", "mdhd"}, kDuration, model.duration());
  const std::vector<std::string> stbl = {"moov", "trak", "mdia", "minf", "stbl"};
  const auto replace = [&](const char* type, const std::vector<SInt64>& numbers,
                           std::size_t per_entry) {
    std::vector<std::string> path = stbl;
    path.push_back(type);
    ReplaceAtom(&file, path, TableOf(type, numbers, per_entry));
  };
  replace("stts", times, 2);
  replace("stsz", sizes, 1);
  replace("stco", offsets, 1);
  replace("stsc", chunk_runs, 3);
  ReplaceAtom(&file, {"moov", "trak", "edts", "elst"}, TableOf("elst", edits, 3));
  return file;
}

}  // namespace quillmere::test
