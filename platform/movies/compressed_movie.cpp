#include "compressed_movie.h"

#include <zlib.h>

#include "big_endian.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

namespace {

/// Inflates a whole zlib stream into `out`, which has the size that the movie claims; false unless
/// the stream ends within it. `out` is cut to what came.
bool Inflate(std::span<const UInt8> stream, std::vector<UInt8>* out) {
  z_stream state = {};
  if (inflateInit(&state) != Z_OK) return false;
  // Both sizes lie far below 4 GiB: the movie atom's limit and that of the inflated movie.
  state.next_in = const_cast<Bytef*>(stream.data());
  state.avail_in = static_cast<uInt>(stream.size());
  state.next_out = out->data();
  state.avail_out = static_cast<uInt>(out->size());
  const int result = inflate(&state, Z_FINISH);
  out->resize(state.total_out);
  inflateEnd(&state);
  return result == Z_STREAM_END;
}

}  // namespace

bool IsCompressedMovie(const Atom& movie) {
  return movie.Find("cmov"_4cc) != nullptr;
}

OSStatus InflateMovie(std::unique_ptr<Atom>* movie) {
  const Atom* method = (*movie)->FindPath({"cmov"_4cc, "dcom"_4cc});
  const Atom* data = (*movie)->FindPath({"cmov"_4cc, "cmvd"_4cc});
  if (method == nullptr || method->payload().size() < 4 || data == nullptr ||
      ReadU32(method->payload().data()) != "zlib"_4cc || data->payload().size() < 4) {
    return badPublicMovieAtom;
  }
  const UInt64 claimed = ReadU32(data->payload().data());
  const std::span<const UInt8> stream = data->payload().subspan(4);
  if (claimed < 8 || claimed > kLargestInflatedMovie ||
      claimed / kHighestInflateRatio > stream.size()) {
    return badPublicMovieAtom;
  }
  auto block = std::make_shared<std::vector<UInt8>>(claimed);
  if (!Inflate(stream, block.get())) return badPublicMovieAtom;
  std::unique_ptr<Atom> inflated;
  const OSStatus status = ParseAtom(std::move(block), &inflated);
  if (status != noErr) return status;
  if (inflated->type() != "moov"_4cc || IsCompressedMovie(*inflated)) return badPublicMovieAtom;
  *movie = std::move(inflated);
  return noErr;
}

}  // namespace quillmere::movies
