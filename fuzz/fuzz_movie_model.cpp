/// Any bytes as a movie file: the atom tree, compressed and fragmented movies, sample tables, write
/// back.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "media_steps.h"
#include "movie_file.h"
#include "movie_records.h"
#include "sample_descriptions.h"
#include "sample_table.h"

namespace {

using quillmere::movies::Atom;
using quillmere::movies::ChunkInfo;
using quillmere::movies::SampleInfo;
using quillmere::movies::SampleTable;

void Require(bool condition) {
  if (!condition) std::abort();
}

/// Look-ups have to agree with each other.
void TryTable(const SampleTable& table, UInt64 file_size) {
  UInt64 chunks = 0;
  UInt64 bytes = 0;
  table.ForEachChunk([&](const ChunkInfo& chunk) {
    ChunkInfo again = {};
    Require(table.ChunkAt(chunks, &again));
    Require(again.offset == chunk.offset && again.size == chunk.size);
    Require(again.decode_time == chunk.decode_time);
    if (chunk.sample_count > 0) {
      SampleInfo sample = {};
      Require(table.SampleAt(chunk.first_sample + chunk.sample_count - 1, &sample));
      Require(sample.chunk == chunks);
      Require(sample.offset + sample.size == chunk.offset + chunk.size);
    }
    bytes += chunk.size;
    return ++chunks < 4096;
  });
  Require(chunks == 4096 || bytes == table.data_size());
  for (UInt64 step = 0; step < 16 && table.duration() > 0; ++step) {
    const SInt64 time = table.duration() / 16 * static_cast<SInt64>(step);
    SampleInfo sample = {};
    const auto number = table.SampleAtTime(time);
    Require(number.has_value() && table.SampleAt(*number, &sample));
    Require(sample.decode_time <= time && time - sample.decode_time < sample.duration);
  }
  quillmere::movies::CheckChunkBounds(table, 0, file_size);
}

/// Runs of like samples add up to the table, and what begins in a media lies in it.
void TryRuns(const SampleTable& table) {
  UInt64 samples = 0;
  SampleTable::RunWalk walk(table, 0);
  SampleInfo first = {};
  SampleInfo sample = {};
  UInt64 count = 0;
  UInt64 size = 0;
  for (int run = 0; run < 4096 && walk.Next(&first, &count, &size); ++run) {
    Require(count > 0 && size == table.SizeOfSamples(samples, count));
    Require(table.SampleAt(samples, &sample) && sample.offset == first.offset);
    Require(sample.decode_time == first.decode_time && sample.size == first.size);
    samples += count;
  }
  Require(samples <= table.sample_count());
  for (const auto first_from :
       {quillmere::movies::FirstSampleFrom, quillmere::movies::FirstRunFrom}) {
    SInt64 time = 0;
    for (int steps = 0; steps < 64; ++steps) {
      const auto step = first_from(table, time);
      if (!step) break;
      Require(step->time >= time && step->time + step->duration <= table.duration());
      time = step->time + 1;
    }
  }
}

/// A description turned to native order and back is as it was.
void TryDescriptions(const Atom& stbl, OSType media_type) {
  const Atom* stsd = stbl.Find("stsd"_4cc);
  if (stsd == nullptr) return;
  for (const Atom& entry : stsd->children()) {
    std::vector<UInt8> record;
    Atom again("none"_4cc);
    if (MakeDescriptionRecord(entry, media_type, &record) != noErr) continue;
    Require(MakeDescriptionAtom(record, media_type, &again) == noErr);
    const std::span<const UInt8> before = entry.payload();
    Require(
        again.type() == entry.type() &&
        std::equal(before.begin(), before.end(), again.payload().begin(), again.payload().end()));
  }
}

void TryTrack(Atom* track, UInt64 file_size) {
  quillmere::movies::HandlerRecord handler;
  const Atom* hdlr = track->FindPath({"mdia"_4cc, "hdlr"_4cc});
  if (hdlr != nullptr) ReadHandler(*hdlr, &handler);
  Atom* stbl = track->FindPath({"mdia"_4cc, "minf"_4cc, "stbl"_4cc});
  SampleTable table;
  if (stbl == nullptr || SampleTable::Read(*stbl, handler.component_subtype, &table) != noErr) {
    return;
  }
  TryTable(table, file_size);
  TryRuns(table);
  TryDescriptions(*stbl, handler.component_subtype);
  std::vector<UInt64> offsets;
  table.ForEachChunk([&](const ChunkInfo& chunk) {
    offsets.push_back(chunk.offset);
    return true;
  });
  Require(ReplaceChunkOffsets(stbl, offsets, true) == noErr);
  SampleTable wide;
  Require(SampleTable::Read(*stbl, handler.component_subtype, &wide) == noErr);
  Require(wide.data_size() == table.data_size() && wide.chunk_count() == table.chunk_count());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  const int descriptor = memfd_create("movie", MFD_CLOEXEC);
  Require(descriptor >= 0 && write(descriptor, data, size) == static_cast<ssize_t>(size));
  quillmere::movies::MovieFile file;
  if (ReadMovieFile(descriptor, &file) == noErr) {
    std::vector<UInt8> written;
    file.movie->Write(&written);
    Require(written.size() == file.movie->Size());
    // What was written reads as the same again.
    std::unique_ptr<Atom> again;
    Require(ParseAtom(std::make_shared<std::vector<UInt8>>(written), &again) == noErr);
    std::vector<UInt8> rewritten;
    again->Write(&rewritten);
    Require(written == rewritten);
    std::vector<quillmere::movies::ForeignOffset> foreign;
    FindForeignOffsets(*file.movie, &foreign);
    for (Atom& child : file.movie->children()) {
      if (child.type() == "trak"_4cc) TryTrack(&child, file.file_size);
    }
  }
  close(descriptor);
  return 0;
}
