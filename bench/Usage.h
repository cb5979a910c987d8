// What the running program has taken from the machine so far.
#ifndef BENCH_USAGE_H
#define BENCH_USAGE_H

namespace zel::bench {

// Time of the calling thread in seconds: processor time where it can be had in fine steps, else the clock on the wall.
double ThreadSeconds();
// Processor time of all threads, in seconds.
double ProcessorSeconds();
// Pages that the system gave the program; negative where it does not tell.
long PageFaults();

}  // namespace zel::bench

#endif
