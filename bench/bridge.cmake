kestrolumen_bench(bridge USES addin COUNTS_HEAP)
