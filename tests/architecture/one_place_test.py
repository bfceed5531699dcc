#!/usr/bin/env python3
"""The search for second places itself: it sees them in every form, and nothing else."""

import unittest

from one_place import VALUES, second_places

SECOND_PLACES = {
    "kAccessoryVendor": ("vendor = 0x10D6;", 'text = "10d6:";', "vendor = 4310;"),
    "kAccessoryProduct": ("product = 0xfd01;", "product = 64769;"),
    "kBlockBytes": ("offset = block * 512;",),
    "kFirmwareBlock": ("first = 1536;", "offset = 786432;"),
    "kIconBlock": ("first = 2048;", "offset = 1048576;"),
    "kServiceAddress": ('address = "127.0.0.1";',),
    "kServicePort": ("port = 9090;", 'text = "port 9090";'),
    "kLongestRequest": ("limit = 65536;", "limit = std::size_t{64} * 1024;"),
    "kReplyRoom": ("room = 10240;", "longest = 10239;"),
    "kRefusedPrefix": ('answer = "Refused: " + why;',),
    "kFailedPrefix": ('answer = "Failed: " + why;',),
    "kWrotePrefix": ('answer = "Wrote " + count;',),
    "kHelperLabel": ('name = "com.corvatel.KestravHelper";', 'path = "/com/corvatel/KestravHelper";'),
    "kHelperRight": ('right = "com.corvitel.KestravHelper";',),
    "kRunAction": ('action = "com.corvatel.kestrav.run";',),
    "kApplicationName": ('name = "com.corvatel.Kestrav";',),
    "kSystemBusAddress": ('bus = "unix:path=/run/dbus/system_bus_socket";',),
}


class SecondPlaces(unittest.TestCase):
    def test_each_form_of_each_value_is_seen(self):
        self.assertEqual(set(SECOND_PLACES), set(VALUES))
        for value, lines in SECOND_PLACES.items():
            for line in lines:
                self.assertIn(value, " ".join(second_places("device/ImageSender.cpp", line)), line)

    def test_comments_and_other_numbers_are_not(self):
        text = "// block 2048\n/* 9090\n */ a = 15360; b = 0x2048; c = 25120;\n"
        self.assertEqual(second_places("device/ImageSender.cpp", text), [])

    def test_the_line_is_the_right_one_behind_a_long_comment(self):
        found = second_places("device/ImageSender.cpp", "/* one\ntwo */\nport = 9090;\n")
        self.assertEqual(len(found), 1)
        self.assertIn("device/ImageSender.cpp:3:", found[0])

    def test_a_comment_sign_in_a_text_hides_nothing(self):
        self.assertEqual(len(second_places("cli/main.cpp", 'a = "//"; port = 9090;')), 1)


if __name__ == "__main__":
    unittest.main()
