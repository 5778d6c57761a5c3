#include "GL_Math_Random.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "GL_Process.h"

namespace {

constexpr int kPairs = 10000;

/// `Signed` and `Unsigned` are the types of the products and sums, `Narrow` that of the low bits.
template <typename Narrow, typename Signed, typename Unsigned, typename UnsignedNarrow>
void TestLowBits(int bits, const char* operation) {
  bool equal = true;
  const auto check = [&](const char* name, Narrow a, Narrow b, Signed result, Unsigned reference) {
    if (static_cast<UnsignedNarrow>(result) == static_cast<UnsignedNarrow>(reference)) return;
    equal = false;
    GL_SysBeep();
    std::printf("Unequal low bits for %d-bits %s, a=%ld,b=%ld\n", bits, name, static_cast<long>(a),
                static_cast<long>(b));
  };
  for (int i = 0; i < kPairs; ++i) {
    // Twice 31 random bits, so that the sign is random too.
    const auto a = static_cast<UnsignedNarrow>(random() ^ (random() << 1));
    const auto b = static_cast<UnsignedNarrow>(random() ^ (random() << 1));
    const auto signed_a = static_cast<Narrow>(a);
    const auto signed_b = static_cast<Narrow>(b);
    check("multiply", signed_a, signed_b, static_cast<Signed>(signed_a) * signed_b,
          static_cast<Unsigned>(a) * b);
    check("add", signed_a, signed_b, static_cast<Signed>(signed_a) + signed_b,
          static_cast<Unsigned>(a) + b);
  }
  if (equal) std::printf("%s succeeded", operation);
}

}  // namespace

SInt32 GL_RandomMod(SInt32 n) {
  return n > 0 ? static_cast<SInt32>(random() % n) : 0;
}

SInt32 GL_RandModIndex(SInt32 n) {
  return GL_RandomMod(n) + 1;
}

SInt32 GL_RandModRange(SInt32 low, SInt32 high) {
  const SInt64 size = static_cast<SInt64>(high) - low;
  return size > 0 ? static_cast<SInt32>(low + random() % size) : low;
}

float GL_RandomFloat() {
  return static_cast<float>(static_cast<double>(random() % 32767) / 32767.0);
}

float GL_RandomFloatRange(float low, float high) {
  return low + (high - low) * GL_RandomFloat();
}

UInt32 GL_StdRandom1(UInt32 seed) {
  return ((seed * 1103515245U + 12345U) >> 16) & 0x7FFFU;
}

void GL_RandomDistribution(SInt32* out, SInt32 count, SInt32 total) {
  if (count <= 0) return;
  SInt64 drawn = 0;
  for (SInt32 i = 0; i < count; ++i) {
    out[i] = static_cast<SInt32>(random());
    drawn += out[i];
  }
  drawn = std::max<SInt64>(drawn, 1);
  SInt64 excess = -static_cast<SInt64>(total);
  for (SInt32 i = 0; i < count; ++i) {
    const SInt64 share = static_cast<SInt64>(out[i]) * total / drawn;
    out[i] = static_cast<SInt32>(std::max<SInt64>(share, 1));
    excess += out[i];
  }
  const SInt64 quotient = excess / count;
  SInt64 rest = excess % count;
  for (SInt32 i = 0; i < count; ++i) {
    SInt64 part = out[i] - quotient;
    if (part < 1) {
      rest += 1 - part;
      part = 1;
    }
    if (rest > 0 && part > 1) {
      --part;
      --rest;
    } else if (rest < 0) {
      ++part;
      ++rest;
    }
    out[i] = static_cast<SInt32>(part);
  }
}

void GL_RandomOrder(SInt32* out, SInt32 count) {
  if (count <= 0) return;
  std::fill_n(out, count, 0);
  for (SInt32 k = 0; k < count; ++k) {
    SInt32 empty_before = GL_RandomMod(count - k);
    SInt32 place = 0;
    while (out[place] != 0 || empty_before-- > 0)
      ++place;
    out[place] = k + 1;
  }
}

void GL_TestLowBitsHypothesis16() {
  TestLowBits<SInt16, SInt32, UInt32, UInt16>(16, "GL_TestLowBitsHypothesis16");
}

void GL_TestLowBitsHypothesis32() {
  TestLowBits<SInt32, SInt64, UInt64, UInt32>(32, "GL_TestLowBitsHypothesis32");
}
