"""Many accessories on one computer, with the real programs."""

import json
import subprocess

from road import BLOCK, FIRMWARE, PROGRAMS, ROOT, RoadTest, content

SIMULATOR = ROOT / "simulator"
COUNT = 20

# The service and the command within one simulation: only there do they see the same disks. What stands in the firmware's
# area of each is kept for afterwards.
TOGETHER = f"""
"$1/kestrav-commandd" 2>"$2/service.log" &
service=$!
until grep -q ready "$2/service.log"; do kill -0 $service || exit 99; sleep 0.05; done
[ -z "$3" ] || eval "$3"
folder=$2
shift 3
"$@"
status=$?
for disk in /dev/sdz?; do
    dd if="$disk" of="$folder/${{disk##*/}}" bs={BLOCK} skip={FIRMWARE} count=200 status=none
done
kill $service
wait $service
exit $status
"""


class Several(RoadTest):
    def together(self, *command, before=""):
        """Runs kestravctl beside the service with all accessories; `before` is done when the service is ready."""
        description = self.folder / "several.umockdev"
        description.write_bytes(subprocess.run([SIMULATOR / "several-accessories", str(COUNT)], check=True,
                                               capture_output=True).stdout)
        return subprocess.run(
            [SIMULATOR / "with-accessory", "--device", description, "--", "sh", "-c", TOGETHER, "sh", PROGRAMS, self.folder,
             before, PROGRAMS / "kestravctl", *map(str, command)],
            capture_output=True, text=True, stdin=subprocess.DEVNULL, timeout=150, check=False)

    def written(self):
        """The letters of the disks that hold the image."""
        return "".join(disk.name[-1] for disk in sorted(self.folder.glob("sdz?"))
                       if disk.read_bytes()[:70000] == content(70000))

    def test_twenty_get_the_image_at_once(self):
        result = self.together("firmware", "--all", "--jobs", COUNT, self.image(70000))
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertEqual(self.written(), "abcdefghijklmnopqrst")
        self.assertTrue(result.stdout.endswith("All 20 accessories hold the image.\n"), result.stdout)
        table = result.stdout[result.stdout.index("DISK "):].splitlines()
        self.assertEqual([row.split()[1] for row in table[1:-1]], [f"KA{number:04}" for number in range(1, COUNT + 1)])

    def test_those_that_fail_hold_no_other_up(self):
        # One is write-protected, one has lost its node, and one was pulled out.
        trouble = ('echo 1 >"$UMOCKDEV_DIR"/sys/class/block/sdzb/ro; rm "$UMOCKDEV_DIR"/dev/rsdzd; '
                   'rm -r "$UMOCKDEV_DIR"/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2.6')
        result = self.together("firmware", "--all", "--json", self.image(70000), before=trouble)
        self.assertEqual(result.returncode, 4, result.stdout + result.stderr)
        self.assertEqual(self.written(), "aceghijklmnopqrst", result.stdout + result.stderr)
        told = json.loads(result.stdout)
        self.assertEqual(told["status"], 4)
        self.assertEqual({end["disk"]: end["status"] for end in told["accessories"] if end["status"] != 0},
                         {"sdzb": 4, "sdzd": 4})
        self.assertEqual(told["problem"], "2 of 19 accessories did not get the image.")

    def test_those_that_are_named_get_the_image_and_no_others(self):
        result = self.together("firmware", "--all", "--serial", "KA0003", "--serial=KA0020", self.image(70000))
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertEqual(self.written(), "ct")
