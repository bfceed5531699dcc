"""--no-prompt, as somebody whom polkit would have asked for an administrator's password."""

import signal
import subprocess
import threading

from road import PROGRAMS, RoadTest


class NoPrompt(RoadTest):
    def setUp(self):
        super().setUp()
        self.own_folders()
        self.add_account("anna", 1801, "admin")
        self.start_system_daemons(PROGRAMS / "kestrav-bless")
        self.folder.chmod(0o755)
        self.path = self.image(1000)

    def called(self, *words):
        """By anna. Nothing is plugged in: it ends before that matters."""
        return subprocess.run(["setpriv", "--reuid=1801", "--regid=1801", "--clear-groups", PROGRAMS / "kestravctl",
                               "firmware", *words, self.path], capture_output=True, timeout=60, stdin=subprocess.DEVNULL)

    def test_fails_where_somebody_would_have_to_be_asked(self):
        result = self.called("--no-prompt")
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertEqual(result.stderr.decode(), "kestravctl: An administrator would have to be asked for a password, and "
                         "nobody is to be asked. Run it as root, or have a rule allow it: see kestrav-commandd(8).\n")
        self.assertEqual(result.stdout, b"")

    def test_waits_for_a_polkit_that_is_slow(self):
        self.polkit.send_signal(signal.SIGSTOP)
        # Longer than a busy computer's polkit needs.
        late = threading.Timer(8, self.polkit.send_signal, [signal.SIGCONT])
        late.start()
        self.addCleanup(late.join)
        result = self.called("--no-prompt")
        self.assertIn(b"would have to be asked", result.stderr)
        self.assertEqual(result.returncode, 1, result.stderr)

    def test_goes_on_where_a_rule_allows_it(self):
        rules = "/etc/polkit-1/rules.d"
        subprocess.run(["mkdir", "-p", rules], check=True)
        with open(f"{rules}/10-kestrav.rules", "w") as rule:
            rule.write('polkit.addRule(function(action, subject) {'
                       '    if (action.id == "com.corvatel.kestrav.run" && subject.user == "anna")'
                       '        return polkit.Result.YES; });')

        def goes_on():
            return b"would have to be asked" not in self.called("--no-prompt").stderr
        # polkit reads the rule when it has noticed it.
        self.wait_until(goes_on, "the rule changes nothing")

    def test_asks_polkit_for_nothing_without_the_option(self):
        self.assertNotIn(b"would have to be asked", self.called().stderr)
