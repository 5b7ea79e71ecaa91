"""The pods of deploy/kubernetes."""

import yaml


def template(path):
    """What the one CronJob or DaemonSet of a file says of its pods."""
    with open(path, encoding="utf-8") as file:
        (workload,) = (
            each for each in yaml.safe_load_all(file) if each["kind"] in ("CronJob", "DaemonSet")
        )
    inner = workload["spec"]
    if workload["kind"] == "CronJob":
        inner = inner["jobTemplate"]["spec"]
    return inner["template"]["spec"]
