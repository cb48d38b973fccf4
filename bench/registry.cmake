kestrolumen_bench(registry USES platform)
