// Memory as the SDK's code gets it in this program, from the heap and by the page: counted, and refused where planned.
#ifndef TESTS_CAMPAIGN_FAILINGMEMORY_H
#define TESTS_CAMPAIGN_FAILINGMEMORY_H

namespace zel::campaign {

// Counts from the beginning. `failing` of the SDK's allocations fail from number `first` on; 0: none fails.
void PlanAllocationFailure(int first, int failing);
int AllocationCount();

// Pieces of the heap that live now, whoever has them.
long long LiveAllocations();

}  // namespace zel::campaign

#endif
