kestrolumen_bench(bits USES platform)
