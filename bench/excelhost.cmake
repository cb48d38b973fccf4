kestrolumen_bench(excelhost USES excelhost COUNTS_HEAP)
