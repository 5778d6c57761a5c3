/// Samples of a movie as an outside tool sees them, beside those of the tables under test.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "atom_builder.h"
#include "movie_file.h"
#include "movie_records.h"
#include "sample_table.h"
#include "test_files.h"

namespace quillmere::test {

/// One packet as ffprobe lists it.
struct ProbedPacket {
  SInt64 pts = 0;
  SInt64 dts = 0;
  SInt64 duration = 0;
  UInt64 size = 0;
  UInt64 offset = 0;
  bool is_sync = false;
};

/// Packets per track, edit lists not applied.
inline std::map<int, std::vector<ProbedPacket>> ProbePackets(const std::filesystem::path& path) {
  const std::string text = RunOrFail(
      {"ffprobe", "-v", "error", "-ignore_editlist", "1", "-show_entries",
       "packet=stream_index,pts,dts,duration,size,pos,flags", "-of", "csv=p=0", path.string()});
  std::map<int, std::vector<ProbedPacket>> packets;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::vector<std::string> words;
    for (std::string word; std::getline(fields, word, ',');)
      words.push_back(word);
    if (words.size() < 7) continue;
    ProbedPacket packet;
    packet.pts = std::stoll(words[1]);
    packet.dts = std::stoll(words[2]);
    packet.duration = words[3] == "N/A" ? 0 : std::stoll(words[3]);
    packet.size = std::stoull(words[4]);
    packet.offset = std::stoull(words[5]);
    packet.is_sync = words[6].front() == 'K';
    packets[std::stoi(words[0])].push_back(packet);
  }
  return packets;
}

/// The tables of all tracks of a movie, which have to read.
inline std::vector<movies::SampleTable> ReadTables(const movies::Atom& movie) {
  std::vector<movies::SampleTable> tables;
  for (const movies::Atom& track : movie.children()) {
    if (track.type() != "trak"_4cc) continue;
    movies::HandlerRecord handler;
    EXPECT_TRUE(movies::ReadHandler(*track.FindPath({"mdia"_4cc, "hdlr"_4cc}), &handler));
    EXPECT_EQ(movies::SampleTable::Read(*track.FindPath({"mdia"_4cc, "minf"_4cc, "stbl"_4cc}),
                                        handler.component_subtype, &tables.emplace_back()),
              noErr);
  }
  return tables;
}

/// Compares a table with the packets of its track, sample by sample. Sound that is counted in
/// frames comes in packets of many frames: there, the bytes are compared run by run.
inline void ExpectSamePackets(const movies::SampleTable& table,
                              const std::vector<ProbedPacket>& packets, bool durations_in_file) {
  ASSERT_FALSE(packets.empty());
  if (!table.descriptions().empty() && table.descriptions()[0].frames_per_packet != 0) {
    UInt64 total = 0;
    std::size_t next = 0;
    table.ForEachChunk([&](const movies::ChunkInfo& chunk) {
      UInt64 position = chunk.offset;
      while (position < chunk.offset + chunk.size && next < packets.size()) {
        EXPECT_EQ(packets[next].offset, position);
        if (position == chunk.offset) {
          EXPECT_EQ(packets[next].dts, chunk.decode_time);
        }
        position += packets[next++].size;
      }
      EXPECT_EQ(position, chunk.offset + chunk.size);
      total += chunk.size;
      return true;
    });
    EXPECT_EQ(next, packets.size());
    EXPECT_EQ(total, table.data_size());
    return;
  }
  ASSERT_EQ(table.sample_count(), packets.size());
  movies::SampleInfo first = {};
  ASSERT_TRUE(table.SampleAt(0, &first));
  for (std::size_t i = 0; i < packets.size(); ++i) {
    SCOPED_TRACE(i);
    movies::SampleInfo sample = {};
    ASSERT_TRUE(table.SampleAt(i, &sample));
    EXPECT_EQ(sample.offset, packets[i].offset);
    EXPECT_EQ(sample.size, packets[i].size);
    EXPECT_EQ(sample.is_sync, packets[i].is_sync);
    EXPECT_EQ(sample.decode_time, packets[i].dts - packets[0].dts);
    EXPECT_EQ(sample.decode_time + sample.composition_offset - first.composition_offset,
              packets[i].pts - packets[0].pts);
    if (durations_in_file && packets[i].duration > 0 && sample.duration > 0) {
      EXPECT_EQ(sample.duration, packets[i].duration);
    }
    if (sample.duration > 0) {
      EXPECT_EQ(table.SampleAtTime(sample.decode_time), i);
    }
  }
}

}  // namespace quillmere::test
