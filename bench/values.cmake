kestrolumen_bench(values USES excelvalues COUNTS_HEAP)
