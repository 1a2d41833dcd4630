"""Prints the commands of a GitHub workflow whose jobs have a matrix of one row or none, as a script that runs them one after another.
Usage: workflow.py FILE CAMPAIGN"""

import re
import shlex
import sys

import yaml


def main(path, campaign):
    with open(path) as file:
        workflow = yaml.safe_load(file)
    for job in workflow["jobs"].values():
        rows = list(job.get("strategy", {}).get("matrix", {"": [""]}).values())[0]
        for index in range(len(rows)):
            values = {"strategy.job-index": str(index), "strategy.job-total": str(len(rows)), "inputs.campaign": campaign}
            environment = {name: re.sub(r"\$\{\{ (.*?) \}\}", lambda one: values[one[1]], text)
                           for name, text in job.get("env", {}).items()}
            words = [f"{name}={shlex.quote(text)}" for name, text in environment.items()]
            for step in job["steps"]:
                if "run" in step:
                    print(*words, "bash -eo pipefail -c", shlex.quote(step["run"]))


main(*sys.argv[1:])
