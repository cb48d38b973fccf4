kestrolumen_bench(bridge USES addin)
