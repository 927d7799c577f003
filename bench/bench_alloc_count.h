#pragma once
// A count of the calls of the global operator new in the benchmark program, for
// benchmarks whose timed loop must not allocate: read it before and after the loop.

long BenchAllocCount();
