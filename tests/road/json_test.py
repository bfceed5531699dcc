"""What --json prints, held against its schema."""

import json

import jsonschema

from road import FIRMWARE, ROOT, AnsweringService, RoadTest

SCHEMA = json.loads((ROOT / "docs/kestravctl.schema.json").read_text())


def assert_in_form(thing, definition="result"):
    jsonschema.Draft202012Validator({**SCHEMA, "$ref": f"#/$defs/{definition}"}).validate(thing)


class Json(RoadTest):
    def result_of(self, *words, status, **options):
        """The one object of that call, which ends with that status."""
        called = self.kestravctl(*words, "--json", **options)
        self.assertEqual(called.returncode, status, called.stderr.decode())
        lines = called.stdout.decode().splitlines()
        self.assertEqual(len(lines), 1, lines)
        result = json.loads(lines[0])
        assert_in_form(result)
        self.assertEqual(result["status"], status)
        return result

    def test_the_schema_is_one_and_takes_nothing_else(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        good = {"disk": "sdb", "serial": None, "port": "1-2.3", "firstBlock": 0, "bytes": 1, "verified": True,
                "seconds": 0.1, "answer": "Wrote", "status": 0, "problem": None}
        assert_in_form(good)
        for change in ({"status": 3}, {"bytes": 0}, {"problem": "no"}, {"more": 1}, {"port": "2"}, {"verified": "yes"}):
            with self.assertRaises(jsonschema.ValidationError, msg=str(change)):
                assert_in_form({**good, **change})

    def test_of_an_update_that_arrived(self):
        self.start_service()
        result = self.result_of("firmware", self.image(200000), status=0)
        self.assertEqual((result["disk"], result["firstBlock"], result["bytes"], result["verified"]),
                         ("sdzz", FIRMWARE, 200000, True))
        self.assertTrue(result["answer"].startswith("Wrote 200000 bytes to sdzz at block 1536, verified, "))
        self.assertGreater(result["seconds"], 0)

    def test_of_a_push(self):
        self.start_service()
        self.assertEqual(self.result_of("push", 5000, self.image(7), status=0)["firstBlock"], 5000)

    def test_keeps_standard_output_for_the_object(self):
        self.start_service()
        called = self.kestravctl("icon", "--json", self.image(9))
        self.assertEqual(called.stdout.count(b"\n"), 1)
        self.assertIn(b"Finished writing to device.", called.stderr)

    def test_of_a_service_that_is_not_running(self):
        result = self.result_of("firmware", self.image(10), status=1)
        self.assertEqual(result["problem"], "The service is not running: systemctl start kestrav-commandd.socket")
        self.assertIsNone(result["answer"])

    def test_of_a_web_server(self):
        with AnsweringService(lambda peer: peer.send(b"HTTP/1.1 400 Bad Request\r\n")):
            result = self.result_of("firmware", self.image(10), status=6)
        self.assertEqual(result["answer"], "HTTP/1.1 400 Bad Request\r\n")

    def test_of_no_accessory(self):
        self.assertIsNone(self.result_of("firmware", self.image(10), status=1, plugged=False)["disk"])

    def test_of_a_missing_image(self):
        self.assertIn("No such file", self.result_of("firmware", self.folder / "none", status=2)["problem"])

    def test_of_a_wrong_call(self):
        self.assertIn("Did you mean 'firmware'?", self.result_of("frimware", status=2)["problem"])

    # -- several -------------------------------------------------------------------------------------------------

    def told_by(self, definition, *words, status, **options):
        called = self.kestravctl(*words, "--json", **options)
        self.assertEqual(called.returncode, status, called.stderr.decode())
        told = json.loads(called.stdout)
        assert_in_form(told, definition)
        self.assertEqual(told["status"], status)
        return told

    def test_of_a_list(self):
        [accessory] = self.told_by("list", "list", status=0)["accessories"]
        self.assertEqual((accessory["disk"], accessory["bytes"], accessory["mounted"]), ("sdzz", 16 << 20, []))
        self.assertEqual(len(self.told_by("list", "list", status=0, device="two-accessories")["accessories"]), 2)

    def test_of_a_list_of_an_accessory_without_a_disk(self):
        [accessory] = self.told_by("list", "list", status=0, device="accessory-without-disk")["accessories"]
        self.assertEqual((accessory["disk"], accessory["bytes"]), (None, None))

    def test_of_an_empty_list(self):
        self.assertIn("Plug it in", self.told_by("list", "list", status=3, plugged=False)["problem"])

    def test_of_all(self):
        self.start_service()
        [end] = self.told_by("all", "firmware", "--all", self.image(200), status=0)["accessories"]
        self.assertTrue(end["verified"])

    def test_of_all_that_fail(self):
        told = self.told_by("all", "firmware", "--all", self.image(200), status=1, device="two-accessories")
        self.assertEqual(told["problem"], "2 of 2 accessories did not get the image.")
        self.assertEqual(len(told["accessories"]), 2)

    def test_of_all_where_there_is_none(self):
        self.assertEqual(self.told_by("all", "icon", "--all", self.image(9), status=1, plugged=False)["accessories"], [])

    def test_the_schemas_of_several_take_nothing_else(self):
        assert_in_form({"accessories": [], "status": 3, "problem": "None."}, "list")
        assert_in_form({"accessories": [], "status": 1, "problem": "None."}, "all")
        for definition, status in (("list", 3), ("all", 1)):
            for change in ({"status": 0}, {"problem": None}, {"more": 1}, {"accessories": [{}]}, {"accessories": None}):
                with self.assertRaises(jsonschema.ValidationError, msg=str(change)):
                    assert_in_form({"accessories": [], "status": status, "problem": "None.", **change}, definition)

    def test_quiet_is_quiet_when_all_is_well_and_not_when_it_is_not(self):
        called = self.kestravctl("firmware", "--quiet", self.image(10))
        self.assertEqual(called.stdout, b"")
        self.assertEqual(called.stderr.decode(),
                         "kestravctl: The service is not running: systemctl start kestrav-commandd.socket\n")
        self.start_service()
        called = self.kestravctl("firmware", "--quiet", self.image(10))
        self.assertEqual((called.returncode, called.stdout, called.stderr), (0, b"", b""))
