#!/usr/bin/env python3
"""The arrow check itself: each kind of forbidden arrow is seen, and allowed ones are not."""

import re
import unittest
from pathlib import Path

from arrows import ALLOWED, check, picture, unused

ROOT = Path(__file__).resolve().parents[2]


def arrow(source, include):
    return check({source: f"#include {include}\n"})


class ForbiddenArrows(unittest.TestCase):
    def assert_broken(self, source, include, words):
        complaints = arrow(source, include)
        self.assertEqual(len(complaints), 1, complaints)
        self.assertIn(words, complaints[0])

    def test_a_lower_folder_looks_up(self):
        self.assert_broken("socket/TCPClient.cpp", '"command/CommandService.h"', "socket must not know command")

    def test_json_looks_at_its_neighbour(self):
        self.assert_broken("json/tree/Reader.cpp", '"socket/Socket.h"', "json/tree must not know socket")

    def test_client_code_looks_into_a_service(self):
        self.assert_broken("device/ImageSender.cpp", '"services/gate/Gate.h"', "must not know services/gate")

    def test_a_service_looks_into_client_code(self):
        self.assert_broken("services/commandd/main.cpp", '"command/JobRequest.h"', "must not know command")

    def test_an_interface_looks_into_its_backend(self):
        self.assert_broken("device/KestravDevice.cpp", '"device/linux/UdevDeviceRegistry.h"', "its own backend")

    def test_a_backend_looks_into_another(self):
        self.assert_broken("device/linux/UdevDeviceRegistry.cpp", '"command/linux/SdBus.h"', "another one")

    def test_production_looks_into_tests(self):
        self.assert_broken("cli/main.cpp", '"tests/command/LoopbackService.h"', "production code looks into tests")

    def test_the_toolkit_outside_its_room(self):
        self.assert_broken("app/ViewController.cpp", "<QWidget>", "only app/qt/")
        self.assert_broken("device/ImageSender.cpp", "<QtCore/QString>", "only app/qt/")

    def test_an_include_that_does_not_start_at_the_root(self):
        complaints = check({"json/tree/Tree.cpp": '#include "Tree.h"\n', "json/tree/Tree.h": ""})
        self.assertEqual(len(complaints), 1)
        self.assertIn("from the root", complaints[0])

    def test_a_folder_without_rules(self):
        self.assert_broken("services/other/main.cpp", "<string>", "no rule")

    def test_a_circle_of_headers(self):
        complaints = check({"json/tree/A.h": '#include "json/tree/B.h"\n', "json/tree/B.h": '#include "json/tree/A.h"\n'})
        self.assertEqual(complaints, ["a circle: json/tree/A.h -> json/tree/B.h -> json/tree/A.h"])


class AllowedArrows(unittest.TestCase):
    def test_down_the_house(self):
        self.assertEqual(arrow("device/ImageSender.cpp", '"command/CommandService.h"'), [])
        self.assertEqual(arrow("services/commandd/main.cpp", '"services/gate/Gate.h"'), [])

    def test_main_joins_the_backends(self):
        self.assertEqual(arrow("cli/main.cpp", '"device/linux/UdevDeviceRegistry.h"'), [])

    def test_tests_see_everything(self):
        self.assertEqual(arrow("tests/device/DetectTest.cpp", '"device/linux/PosixDiskCalls.h"'), [])

    def test_the_toolkit_in_its_room(self):
        self.assertEqual(arrow("app/qt/MainWindow.cpp", "<QWidget>"), [])


class UnusedArrows(unittest.TestCase):
    def test_are_named(self):
        every_arrow = {f"{here}/A.cpp": "".join(f'#include "{there}/B.h"\n' for there in ALLOWED[here])
                       for here in ALLOWED}
        self.assertEqual(unused(every_arrow), [])
        every_arrow["socket/A.cpp"] = "#include <string>\n"
        self.assertEqual(unused(every_arrow),
                         ["socket may know base, and no file of it does: take the arrow out of ALLOWED"])

    def test_are_not_made_used_by_those_who_may_look_at_everything(self):
        complaints = unused({"tests/socket/A.cpp": '#include "base/UniqueFd.h"\n'})
        self.assertEqual(len(complaints), sum(len(targets) for targets in ALLOWED.values()))


class ThePicture(unittest.TestCase):
    HOUSE = {"ground": set(), "left": {"ground"}, "right": {"ground"}, "roof": {"left", "right", "ground"}}

    def test_shows_every_road_once_and_no_shorter_way(self):
        roof, right = picture(self.HOUSE).splitlines()[:2]
        self.assertEqual(roof, "roof ──► left ──► ground")
        self.assertEqual(right, "roof ──► right ──► ground")

    def test_is_the_one_in_the_readme(self):
        layout = (ROOT / "README.md").read_text().split("### Layout")[1].split("\n### ")[0]
        blocks = re.findall(r"```text\n(.*?)\n```", layout, re.S)
        self.assertIn(picture(ALLOWED), blocks, "put what arrows.py --picture prints into README.md")


if __name__ == "__main__":
    unittest.main()
