kestrolumen_bench(files USES platform COUNTS_HEAP)
