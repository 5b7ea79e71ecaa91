"""The pods of deploy/kubernetes."""

import yaml


USER = 65534


def manifests(path):
    """The manifests of a file, by their kinds."""
    with open(path, encoding="utf-8") as file:
        return {each["kind"]: each for each in yaml.safe_load_all(file)}


def template(path):
    """What the one CronJob or DaemonSet of a file says of its pods."""
    found = manifests(path)
    if "CronJob" in found:
        return found["CronJob"]["spec"]["jobTemplate"]["spec"]["template"]["spec"]
    return found["DaemonSet"]["spec"]["template"]["spec"]


def fit_for_podman(pod, image):
    """What podman can run of a pod: an image of its own, and the name "here", as there is no node."""
    for container in pod["containers"] + pod.get("initContainers", []):
        container.update(image=image, imagePullPolicy="Never")
        for setting in container["env"]:
            setting["value"] = {"NODE": "here", "SPLAY": "1"}[setting["name"]]
            setting.pop("valueFrom", None)


def assert_confined(test, container):
    """What `podman inspect` tells of a container is what the manifests ask for."""
    test.assertTrue(container["HostConfig"]["ReadonlyRootfs"])
    test.assertEqual(container["Config"]["User"], f"{USER}:{USER}")
    test.assertFalse(container["EffectiveCaps"])
    test.assertIn("no-new-privileges", container["HostConfig"]["SecurityOpt"])
    test.assertEqual(container["HostConfig"]["Memory"], 256 * 1024 * 1024)
