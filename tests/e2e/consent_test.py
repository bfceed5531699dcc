"""Who may have a disk written: an administrator who agrees. Asked is in the terminal in which kestravctl runs."""

from case import GuestCase
from disks import FIRMWARE, ICON, content
from world import World

PROMPT = "Password:"


class Consent(GuestCase):
    def setUp(self):
        super().setUp()
        self.anna, self.ben = World.person("anna"), World.person("ben")

    def test_anna_has_a_seat(self):
        session = self.root.sh("loginctl show-session -p Seat -p Active -p Name"
                               " $(loginctl list-sessions --no-legend | awk '$3 == \"anna\" { print $1 }')").out
        self.assertEqual(sorted(session.split()), ["Active=yes", "Name=anna", "Seat=seat0"])

    def test_an_administrator_agrees_with_the_password(self):
        accessory, path = self.plugged(), self.image(30000)
        accessory.slot.expect(FIRMWARE, content(30000))
        update = self.anna.start("kestravctl", "firmware", path, terminal=True)
        update.wait_for(PROMPT)
        update.type_password("secret")
        result = update.wait()
        self.assertIn("Authentication is required to unmount, read or write the disk of your Kestrav accessory",
                      result.out)
        self.assertIn(f"Wrote 30000 bytes to {accessory.disk} at block 1536, verified", result.out)
        self.assertEqual(result.status, 0)
        self.wait_for_log("user 1801: dd if=", "kestrav-commandd")
        self.assert_disk(accessory)

    def test_one_password_is_enough_for_both_commands_of_an_update(self):
        accessory, path = self.plugged(), self.image(512)
        accessory.slot.expect(ICON, content(512))
        update = self.anna.start("kestravctl", "icon", path, terminal=True)
        update.wait_for(PROMPT)
        update.type_password("secret")
        self.assertEqual(update.wait().out.count(PROMPT), 1)
        self.assert_disk(accessory)

    def test_a_user_who_is_no_administrator_is_refused(self):
        accessory, path = self.plugged(), self.image(512)
        update = self.ben.start("kestravctl", "firmware", path, terminal=True)
        update.wait_for(PROMPT)
        self.assertIn("anna", update.look().out)
        update.type_password("guest")
        result = update.wait()
        self.assertEqual(result.out.count(PROMPT), 1, "a wrong password is asked for once an update")
        self.assertEqual(result.out.count("Refused:"), 2, str(result))
        self.wait_for_log("user 1802: dd if=", "kestrav-commandd")
        self.wait_for_log("bs=512: Refused: an administrator did not agree.", "kestrav-commandd")
        self.assert_disk(accessory)

    def test_nobody_is_asked_without_a_terminal_and_that_is_a_refusal(self):
        accessory, path = self.plugged(), self.image(512)
        result = self.ben.run("kestravctl", "firmware", "--verify", path, check=False)
        self.assertIn("Refused:", result.err)
        self.assertEqual(result.status, 4, str(result))
        self.assert_disk(accessory)

    def test_nobody_is_asked_who_wants_nobody_asked(self):
        accessory, path = self.plugged(), self.image(512)
        update = self.anna.start("kestravctl", "firmware", "--no-prompt", path, terminal=True)
        result = update.wait()
        self.assertNotIn(PROMPT, result.out)
        self.assertIn("An administrator would have to be asked for a password", result.out)
        self.assertEqual(result.status, 1, str(result))
        self.assert_disk(accessory)

    def test_a_user_can_not_open_the_disk(self):
        accessory, path = self.plugged(), self.image(512)
        for words in (["write", "0", path], ["read", "0", "512"]):
            result = self.anna.run("kestravctl", *words, check=False)
            self.assertEqual(result.status, 1, str(result))
        self.assert_disk(accessory)
