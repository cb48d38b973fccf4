kestrolumen_bench(growth USES addin excelhost excelhost_automation)
