"""What a host of the project reads: the checks that it runs, and the form for whoever reports something."""

import re
import subprocess
import unittest
from pathlib import Path

import yaml

ROOT = Path(__file__).resolve().parents[2]
HOST = ROOT / ".github"
FORM_PARTS = {"markdown", "textarea", "input", "dropdown", "checkboxes"}


def read(path):
    return yaml.safe_load(path.read_text(encoding="utf-8"))


def steps_of_test():
    return set(re.findall(r"^step_(\w+)\(\)", (ROOT / "test").read_text(encoding="utf-8"), re.M))


class Workflow(unittest.TestCase):
    def setUp(self):
        self.workflow = read(HOST / "workflows/checks.yml")
        self.job = self.workflow["jobs"]["test"]

    def test_has_nothing_that_a_host_would_not_know(self):
        # YAML takes a bare "on" for a truth value; hosts do not.
        self.assertEqual(set(self.workflow), {"name", True, "permissions", "jobs"})
        self.assertLessEqual(set(self.workflow[True]), {"push", "pull_request", "schedule", "workflow_dispatch"})
        self.assertEqual(set(self.job), {"strategy", "runs-on", "container", "timeout-minutes", "steps"})
        for step in self.job["steps"]:
            self.assertEqual(len({"run", "uses"} & set(step)), 1, step)
            self.assertLessEqual(set(step), {"run", "uses", "if", "with"}, step)
            self.assertRegex(step.get("uses", "some/action@v1"), r"^[\w-]+/[\w-]+@v\d+$")

    def test_calls_the_checks_that_there_are_on_both_releases(self):
        self.assertEqual(self.job["strategy"]["matrix"]["debian"], ["12", "13"])
        self.assertEqual(self.job["container"]["image"], "debian:${{ matrix.debian }}")
        named = [step["run"].split()[1:] for step in self.job["steps"] if step.get("run", "").startswith("./test")]
        self.assertEqual(named[:2], [["quick"], []])
        self.assertLessEqual({name for words in named for name in words}, steps_of_test())

    def test_has_commands_that_a_shell_takes(self):
        for step in self.job["steps"]:
            subprocess.run(["bash", "-n", "-c", step.get("run", ":")], check=True)

    def test_runs_all_of_it_each_night_and_the_quick_part_for_each_change(self):
        when = {step["run"]: step.get("if", "") for step in self.job["steps"] if "run" in step}
        self.assertEqual(when["./test quick"], "github.event_name != 'schedule'")
        self.assertEqual(when["./test"], "github.event_name == 'schedule'")
        self.assertRegex(self.workflow[True]["schedule"][0]["cron"], r"^\d+ \d+ \* \* \*$")


class Form(unittest.TestCase):
    def test_asks_for_what_the_doctor_says(self):
        form = read(HOST / "ISSUE_TEMPLATE/trouble.yml")
        self.assertLessEqual({"name", "description", "body"}, set(form))
        asked = [part for part in form["body"] if part["type"] != "markdown"]
        self.assertLessEqual({part["type"] for part in form["body"]}, FORM_PARTS)
        self.assertEqual(len({part["id"] for part in asked}), len(asked))
        doctor = next(part for part in asked if part["id"] == "doctor")
        self.assertIn("`kestravctl doctor --json`", doctor["attributes"]["label"])
        self.assertTrue(doctor["validations"]["required"])
