"""The window in other sizes, colours and directions."""

from desktop import DesktopTest, run

DARK = """
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=239,240,241
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=35,38,41
ForegroundNormal=239,240,241
ForegroundInactive=127,140,141
[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=239,240,241
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=239,240,241
[General]
ColorScheme=BreezeDark
"""


class Looks(DesktopTest):
    def run_an_update(self):
        """So that the pictures have something to show."""
        self.start_service()
        path = self.image(200000)
        self.click(self.firmware_button())
        self.choose(path, "Choose a firmware image")
        self.wait_until(lambda: self.log().endswith("End firmware processing.\n"), "the update does not end")

    def frame(self):
        return self.box(self.find("frame", "Kestrav"))

    def colours(self, picture, box):
        """The darkest and the lightest value in a part of a picture, from 0 to 255."""
        x, y, width, height = box
        text = run("convert", picture, "-crop", f"{width}x{height}+{x}+{y}", "-colorspace", "Gray", "-format",
                   "%[fx:int(255*minima)] %[fx:int(255*maxima)] %[fx:int(255*mean)]", "info:")
        return [int(value) for value in text.split()]

    def pixels(self):
        """The size of the window on the screen, which is what a scale changes."""
        window = self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$").split()[-1]
        shell = dict(line.split("=") for line in self.xdotool("getwindowgeometry", "--shell", window).split())
        return int(shell["WIDTH"]), int(shell["HEIGHT"])

    def restart_with(self, **environment):
        self.environment.update(environment)
        self.open_window()

    def test_the_preferred_size(self):
        self.restart_with()
        self.assertEqual(self.pixels(), (480, 270))
        self.run_an_update()
        picture = self.picture("light")
        self.assertGreater(self.colours(picture, self.box(self.find("text", "Log")))[2], 200)

    def test_one_and_a_half_times_the_size(self):
        self.restart_with(QT_SCALE_FACTOR="1.5")
        # The toolkit rounds whenever the window manager tells it of the window: Debian 13's loses up to three pixels.
        for size, wanted in zip(self.pixels(), (720, 405)):
            self.assertAlmostEqual(size, wanted, delta=3)

    def test_twice_the_size(self):
        self.restart_with(QT_SCALE_FACTOR="2")
        self.assertEqual(self.pixels(), (960, 540))
        self.keys("alt+f")
        self.find("dialog", "Choose a firmware image")
        self.picture("chooser")
        self.dismiss("Choose a firmware image")
        self.wait_until_usable()
        self.picture("window")

    def test_three_times_the_size(self):
        self.restart_with(QT_SCALE_FACTOR="3")
        self.assertEqual(self.pixels(), (1440, 810))
        self.picture("window")

    def test_larger_letters_fit(self):
        (self.home / ".config").mkdir()
        (self.home / ".config/kdeglobals").write_text("[General]\nfont=DejaVu Sans,20,-1,5,50,0,0,0,0,0\n")
        self.restart_with(XDG_CURRENT_DESKTOP="KDE", KDE_FULL_SESSION="true", KDE_SESSION_VERSION="5")
        self.run_an_update()
        self.wait_for_panel("read back and equal")
        self.picture("window")
        frame = self.frame()
        for role, name in (("push button", "Update Firmware…"), ("push button", "Update Icon…"), ("text", "Log"),
                           ("text", "System message"), ("notification", self.panel())):
            x, y, width, height = self.box(self.find(role, name))
            self.assertGreaterEqual(x, frame[0])
            self.assertLessEqual(x + width, frame[0] + frame[2])
            self.assertLessEqual(y + height, frame[1] + frame[3])
            self.assertGreater(height, 20)

    def test_dark_colours(self):
        (self.home / ".config").mkdir()
        (self.home / ".config/kdeglobals").write_text(DARK)
        self.restart_with(XDG_CURRENT_DESKTOP="KDE", KDE_FULL_SESSION="true", KDE_SESSION_VERSION="5")
        self.run_an_update()
        picture = self.picture("dark")
        for name in ("Log", "System message"):
            darkest, lightest, mean = self.colours(picture, self.box(self.find("text", name)))
            self.assertLess(mean, 80, name)
            self.assertGreater(lightest - darkest, 150, name)

    def test_from_right_to_left(self):
        self.restart_with(LC_ALL="he_IL.UTF-8")
        self.run_an_update()
        self.assertGreater(self.box(self.firmware_button())[0], self.box(self.icon_button())[0])
        self.picture("rtl")

    def test_the_desktop_knows_whose_window_it_is(self):
        self.restart_with()
        window = self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$").split()[-1]
        properties = run("xprop", "-id", window, "WM_CLASS", "_NET_WM_ICON", "WM_NAME", env=self.environment)
        self.assertIn('WM_CLASS(STRING) = "kestrav", "kestrav"', properties)
        self.assertIn("Icon (64 x 64)", properties)
