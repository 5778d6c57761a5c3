/// What a silent log costs: DBG_ShouldPrint on a thread without debug data beside one bare look-up
/// of a thread's own value.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include "ORW_Debug.h"

namespace {

void BareLookUp(benchmark::State& state) {
  pthread_key_t key{};
  if (pthread_key_create(&key, nullptr) != 0) {
    state.SkipWithError("no key");
    return;
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(pthread_getspecific(key));
  pthread_key_delete(key);
}
BENCHMARK(BareLookUp);

void ShouldPrintWithoutKey(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(DBG_ShouldPrint(kDBG_FileObjectsTag));
}

void ShouldPrintWithoutData(benchmark::State& state) {
  DBG_CreateDbgDataKey();
  for (auto _ : state)
    benchmark::DoNotOptimize(DBG_ShouldPrint(kDBG_FileObjectsTag));
}
// In this order: the key stays once it is made.
BENCHMARK(ShouldPrintWithoutKey);
BENCHMARK(ShouldPrintWithoutData);

void TraceWithoutData(benchmark::State& state) {
  for (auto _ : state) {
    const quillmere::debug::Trace trace(kDBG_FileObjectsTag, "function");
    benchmark::DoNotOptimize(&trace);
  }
}
BENCHMARK(TraceWithoutData);

}  // namespace

BENCHMARK_MAIN();
