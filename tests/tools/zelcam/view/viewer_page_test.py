#!/usr/bin/env python3
"""The viewer's page in a browser: viewer_page_test.py [--only CASE] PROGRAM [ARGUMENT...], the last ones start zelcam."""

import importlib.util
import json
import os
import sys
import unittest

MISSING = [name for name in ("selenium", "numpy", "tifffile") if importlib.util.find_spec(name) is None]
if not MISSING:
    import numpy
    import tifffile
    from selenium.webdriver import ActionChains, Keys
    from selenium.webdriver.support.ui import Select

    from browser import Browser, find_program, wait
    from viewer_client import Viewer

    MISSING = [name for name in ("chromium", "chromedriver") if find_program(name) is None]

COMMAND = []


def files(viewer):
    return set(viewer.folder.glob("*.tif"))


class ViewerPage(unittest.TestCase):
    page = None

    @classmethod
    def setUpClass(cls):
        cls.page = Browser()

    @classmethod
    def tearDownClass(cls):
        cls.page.end()

    def view(self, *arguments, **environment):
        viewer = Viewer(COMMAND, *arguments, **environment)
        self.addCleanup(self.quit, viewer)
        self.page.size(1280, 800)
        self.page.open(viewer.address)
        return viewer, self.page

    def enter(self, id, text):
        field = self.page.get(id)
        field.clear()
        field.send_keys(text, Keys.ENTER)

    def quit(self, viewer):
        on_the_console = self.page.errors()
        self.assertEqual((self.page.quit(viewer), on_the_console), (0, []))
        self.page.wait_text("lost", "connection to zelcam is lost")
        # What is left open goes on asking for a viewer that is gone; the browser reports each attempt.
        self.page.driver.get("about:blank")
        self.page.errors()

    def wait_new_frame(self, cause=lambda: None):
        # Its number may be that of the frame before, when the camera was started in between.
        self.page.run("delete document.documentElement.dataset.frame")
        cause()
        wait(lambda: self.page.frame() is not None, "another frame")

    def snapshot(self, viewer):
        """The file that the page names, its pixels and what stands beside them."""
        before = files(viewer)
        self.page.get("snapshot").click()
        # What stands beside it may be there before.
        file, = wait(lambda: files(viewer) - before, "a snapshot")
        self.page.wait_text("log", file.name)
        return tifffile.imread(file), json.loads(file.with_suffix(".json").read_text())

    def drag(self, start, end):
        """Over the picture, in pixels of the frame."""
        places = self.page.module(
            "const box = document.getElementById('picture').getBoundingClientRect();"
            f"return [{list(start)}, {list(end)}].map(([x, y]) => stage.view.toScreen(x + 0.5, y + 0.5))"
            ".map(({x, y}) => [Math.round(x - box.width / 2), Math.round(y - box.height / 2)])")
        canvas = self.page.get("picture")
        (ActionChains(self.page.driver, duration=0).move_to_element_with_offset(canvas, *places[0]).click_and_hold()
         .move_to_element_with_offset(canvas, *places[1]).release().perform())

    def test_pixels_are_the_frames(self):
        viewer, page = self.view(SIZE="320x240")
        self.wait_new_frame()
        page.get("run").click()
        page.wait_text("run-state", "stopped")
        samples, beside = self.snapshot(viewer)
        wait(lambda: page.frame() == beside["frame_number"], "the frame of the snapshot")
        # A window of 255 counts: each count is a grey of its own.
        black = int(numpy.median(samples)) - 128
        for zoom in (1, 2):
            drawn = page.module(f"""
                const {{ part }} = stage.picture.last;
                stage.view.zoomTo({zoom});
                const contrast = {{ black: {black}, white: {black + 255}, gamma: 1, map: "grey", marks: false }};
                stage.picture.draw(stage.view, contrast);
                const pixels = stage.picture.read();
                const {{ x, y }} = stage.view.origin;
                const greys = [];
                for (let row = 0; row < {240 * zoom}; ++row)
                    for (let column = 0; column < {320 * zoom}; ++column)
                        greys.push(pixels.data[4 * ((y + row) * pixels.width + x + column)]);
                return greys;""")
            expected = numpy.clip(samples.astype(int) - black, 0, 255).repeat(zoom, 0).repeat(zoom, 1)
            numpy.testing.assert_array_equal(numpy.reshape(drawn, expected.shape), expected)

    def test_controls_change_the_camera(self):
        viewer, page = self.view(SIZE="640x480")
        self.enter("exposure", "25000")
        page.wait_text("log", "EXPOSURE_TIME_US", "25000")
        page.wait_text("exposure-says", "25 ms")
        self.enter("gain", "5000")
        page.wait_text("log", "GAIN", "0..1023")
        page.wait_text("gain-says", "not taken")
        page.get("tab-camera").click()
        Select(page.get("binning")).select_by_value("2")
        page.wait_text("read-size", "320 × 240")
        self.wait_new_frame()
        samples, beside = self.snapshot(viewer)
        self.assertEqual((samples.shape, beside["exposure_us"], beside["gain"]), ((240, 320), 25000, 0))
        Select(page.get("binning")).select_by_value("1")
        page.wait_text("read-size", "640 × 480")
        page.run("document.querySelector('[data-tool=crop]').click()")
        self.drag((100, 100), (299, 249))
        page.wait_text("read-size", "200 × 150")
        page.get("region-full").click()
        page.wait_text("read-size", "640 × 480")
        page.run("document.querySelector('[value=software]').click()")
        page.wait_text("run-state", "waiting for triggers")
        wait(lambda: page.get("trigger").is_enabled(), "the trigger button")
        self.wait_new_frame(page.get("trigger").click)

    def test_by_keys_alone(self):
        viewer, page = self.view(SIZE="640x480")
        page.keys(" ")
        page.wait_text("run-state", "stopped")
        page.keys("1")
        page.wait_text("zoom", "100 %")
        page.keys("++")
        page.wait_text("zoom", "200 %")
        page.keys("f", "g")
        self.assertEqual(page.focused(), "picture")
        page.keys(Keys.ENTER, *[Keys.ARROW_RIGHT] * 9, *[Keys.ARROW_DOWN] * 4, Keys.ENTER)
        page.wait_text("region-facts", "10 × 5")
        page.keys("l", Keys.ENTER, *[Keys.ARROW_LEFT] * 7, Keys.ENTER)
        wait(lambda: page.get("profile").is_displayed(), "the profile")
        page.keys("a")
        page.wait_text("messages", "Auto-contrast: black")
        page.keys("s")
        wait(lambda: files(viewer), "a snapshot")
        page.keys("]")
        page.wait_text("log", "EXPOSURE_TIME_US", "13000")
        page.keys("/", "cooling_mode", Keys.TAB, Keys.TAB)
        self.assertEqual(page.focused(), "parameter-COOLING_MODE")
        page.keys(Keys.DELETE, "2", Keys.ENTER)
        page.wait_text("log", "COOLING_MODE: requested 2 -> actual 2")
        page.keys(Keys.SHIFT, Keys.TAB, Keys.NULL)
        page.keys("?")
        wait(lambda: page.run("return document.getElementById('keys').open"), "the list of keys")
        page.keys(Keys.ENTER)
        wait(lambda: not page.run("return document.getElementById('keys').open"), "its end")
        # Everything that can be clicked can be reached, and has a name.
        self.assertEqual(page.run("""
            return [...document.querySelectorAll('button, input, select')].filter((one) => {
                const name = one.getAttribute('aria-label') ?? (one.labels?.length ? one.labels[0].textContent : one.textContent);
                return !name.trim() || (one.tabIndex < 0 && one.role !== 'tab');
            }).map((one) => one.outerHTML)"""), [])

    def test_two_tabs(self):
        viewer, page = self.view(SIZE="320x240")
        first = page.driver.current_window_handle
        page.driver.switch_to.new_window("window")
        second = page.driver.current_window_handle
        page.open(viewer.address)
        self.enter("exposure", "7000")
        page.wait_text("exposure-says", "7 ms")
        page.driver.switch_to.window(first)
        page.wait_text("exposure-says", "7 ms")
        page.wait_text("count-facts", "Pages that look2")
        for window in (first, second):
            page.driver.switch_to.window(window)
            self.wait_new_frame()
        self.assertEqual(page.errors(), [])
        page.driver.close()
        page.driver.switch_to.window(first)
        page.wait_text("count-facts", "Pages that look1")
        client = page.run("return document.documentElement.dataset.client")
        page.run("latestSocket.close()")
        wait(lambda: page.run("return document.documentElement.dataset.client") != client, "another connection")
        self.wait_new_frame()
        self.assertFalse(page.get("lost").is_displayed())

    def test_color_in_color(self):
        self.view("--color", CL_CAMERAS="0", USB_CAMERAS="1", SIZE="320x240")
        wait(lambda: self.page.module("return stage.picture.last.channels") == 3, "three channels")
        colored = self.page.module("""
            const { data } = stage.read();
            let colored = 0;
            for (let at = 0; at < data.length; at += 4) colored += Math.abs(data[at] - data[at + 2]) > 40 ? 1 : 0;
            return colored""")
        self.assertGreater(colored, 1000)

    def test_narrow_page(self):
        _, page = self.view(SIZE="320x240")
        for width, height in ((360, 740), (800, 600), (3840, 2160)):
            page.size(width, height)
            if page.get("panel-switch").get_attribute("aria-expanded") == "false":
                page.get("panel-switch").click()
            for tab in ("camera", "picture", "measure", "frames", "parameters"):
                page.run("document.getElementById(arguments[0]).click()", f"tab-{tab}")
                beyond = page.run("""
                    return [document.documentElement, ...document.querySelectorAll('body *:not(option)')].filter((one) => {
                        const box = one.getBoundingClientRect();
                        return box.width > 1 && (box.right > innerWidth + 1 || box.left < -1);
                    }).map((one) => one.outerHTML.slice(0, 200))""")
                self.assertEqual(beyond, [], f"{tab} at {width} pixels")


if __name__ == "__main__":
    arguments = sys.argv[1:]
    cases = [f"ViewerPage.{arguments[1]}"] if arguments[0] == "--only" else None
    # Viewers run in folders of their own.
    COMMAND = [os.path.abspath(word) for word in (arguments[2:] if cases else arguments)]
    if MISSING:
        print(f"SKIPPED: {', '.join(MISSING)} is not installed")
        sys.exit(1 if os.environ.get("CI") == "true" else 0)
    unittest.main(argv=[sys.argv[0]], defaultTest=cases, verbosity=2)
