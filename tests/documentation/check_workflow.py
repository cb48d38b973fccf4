#!/usr/bin/python3
"""Holds a workflow file against what it runs: check_workflow.py WORKFLOW.yml FOLDER [--path FOLDER]...

The file is YAML as GitHub's documentation of workflows has it, and each step that runs excelhost is run by bash, in FOLDER.
"""
import argparse
import os
import subprocess
import sys
from pathlib import Path

import yaml


def faults(workflow):
    """What isn't as a workflow must be."""
    # YAML 1.1 takes the word "on" for a truth value.
    for key in ("name", True, "jobs"):
        if key not in workflow:
            yield f"there is no '{'on' if key is True else key}'"
    for name, job in workflow.get("jobs", {}).items():
        if "runs-on" not in job:
            yield f"job {name} runs on nothing"
        for number, step in enumerate(job.get("steps", []), 1):
            if ("uses" in step) == ("run" in step):
                yield f"step {number} of {name} needs one of 'uses' and 'run'"
            if "uses" in step and "@v" not in step["uses"]:
                yield f"step {number} of {name} names no version of {step['uses']}"


def run(job, step, folder, path):
    variables = {name: str(value) for name, value in job.get("env", {}).items() if "${{" not in str(value)}
    environment = {**os.environ, **variables, "PATH": os.pathsep.join([*path, os.environ["PATH"]])}
    # As GitHub starts bash.
    result = subprocess.run(["bash", "-e", "-o", "pipefail", "-c", step["run"]], cwd=folder, env=environment,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300, check=False)
    return result.returncode, result.stdout.decode("utf-8", "replace")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("workflow", type=Path)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--path", action="append", default=[])
    arguments = parser.parse_args()

    workflow = yaml.safe_load(arguments.workflow.read_text(encoding="utf-8"))
    wrong = list(faults(workflow))
    ran = 0
    for job in workflow["jobs"].values():
        for step in job["steps"]:
            if not step.get("run", "").lstrip().startswith("excelhost "):
                continue
            ran += 1
            code, output = run(job, step, arguments.folder, arguments.path)
            if code != 0:
                wrong.append(f"'{step['name']}' ends with {code}:\n{output}")
    # What is kept of a job has to be there.
    for job in workflow["jobs"].values():
        for step in job["steps"]:
            for kept in step.get("with", {}).get("path", "").split():
                if not (arguments.folder / kept).is_file():
                    wrong.append(f"no step has made {kept}")
    for fault in wrong:
        print(f"{arguments.workflow.name}: {fault}")
    print(f"{arguments.workflow.name}: {ran} steps run, {len(wrong)} faults")
    return 1 if wrong or ran == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
