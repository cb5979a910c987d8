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

// Memory of the program: what lies in the machine's, what of that no other program shares, and what was allocated and
// not freed; 0 where the system does not tell.
struct Memory {
    long resident_kib = 0;
    long own_kib = 0;
    double allocated_kib = 0;
};
Memory MemoryInUse();
// Has the allocator give free memory back to the system.
void ReturnFreeMemory();

}  // namespace zel::bench

#endif
