#!/usr/bin/env python3
"""The arrow check itself: each kind of forbidden arrow is seen, and allowed ones are not."""

import unittest

from arrows import check


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
        self.assert_broken("json/Reader.cpp", '"socket/Socket.h"', "json must not know socket")

    def test_client_code_looks_into_a_service(self):
        self.assert_broken("device/updates.cpp", '"services/privileged/Gate.h"', "must not know services/privileged")

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
        self.assert_broken("device/updates.cpp", "<QtCore/QString>", "only app/qt/")

    def test_an_include_that_does_not_start_at_the_root(self):
        complaints = check({"json/Tree.cpp": '#include "Tree.h"\n', "json/Tree.h": ""})
        self.assertEqual(len(complaints), 1)
        self.assertIn("from the root", complaints[0])

    def test_a_folder_without_rules(self):
        self.assert_broken("services/other/main.cpp", "<string>", "no rule")

    def test_a_circle_of_headers(self):
        complaints = check({"json/A.h": '#include "json/B.h"\n', "json/B.h": '#include "json/A.h"\n'})
        self.assertEqual(complaints, ["a circle: json/A.h -> json/B.h -> json/A.h"])


class AllowedArrows(unittest.TestCase):
    def test_down_the_house(self):
        self.assertEqual(arrow("device/updates.cpp", '"command/CommandService.h"'), [])
        self.assertEqual(arrow("services/commandd/main.cpp", '"services/privileged/Gate.h"'), [])

    def test_main_joins_the_backends(self):
        self.assertEqual(arrow("cli/main.cpp", '"device/linux/UdevDeviceRegistry.h"'), [])

    def test_tests_see_everything(self):
        self.assertEqual(arrow("tests/device/DetectTest.cpp", '"device/linux/PosixDiskCalls.h"'), [])

    def test_the_toolkit_in_its_room(self):
        self.assertEqual(arrow("app/qt/MainWindow.cpp", "<QWidget>"), [])


if __name__ == "__main__":
    unittest.main()
