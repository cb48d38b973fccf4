kestrolumen_bench(values USES excelvalues)
