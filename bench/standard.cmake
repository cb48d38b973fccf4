kestrolumen_bench(standard USES automation platform)
