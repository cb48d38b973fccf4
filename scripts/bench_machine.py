#!/usr/bin/env python3
"""Prints what a benchmark ran on, as JSON: processor, compiler (the one argument), day, and the machine's load."""
import datetime
import json
import os
import platform
import sys

names = [line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
         if line.startswith("model name")]
print(json.dumps({"processor": names[0] if names else platform.machine(), "processors": os.cpu_count(),
                  "compiler": sys.argv[1], "date": datetime.date.today().isoformat(), "load": os.getloadavg()[2]}))
