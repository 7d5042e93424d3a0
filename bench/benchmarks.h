#ifndef BENCH_BENCHMARKS_H
#define BENCH_BENCHMARKS_H

namespace bench {

// Each registers its benchmarks. Their names are paths: what/file or kind or '-'/chassis/who.
void registerLoads();
void registerLookUps();
void registerSessions();
void registerRefusals();
void registerModel();
void registerWalks();
void registerCommands();
void registerRouting();
void registerGrowth();

}  // namespace bench

#endif
