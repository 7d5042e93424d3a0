#ifndef BENCH_BENCHMARKS_H
#define BENCH_BENCHMARKS_H

namespace bench {

// Each registers its benchmarks. Their names are paths: what/file or '-'/chassis/who.
void registerLoads();
void registerLookUps();
void registerSessions();
void registerModel();
void registerRouting();

}  // namespace bench

#endif
