kestrolumen_bench(files USES platform)
