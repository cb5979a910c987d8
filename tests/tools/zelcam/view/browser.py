"""A browser with the viewer's page: for its tests, its pictures and its figures."""

import shutil
import time

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By

from viewer_client import PATIENCE

FLAGS = ("--headless=new", "--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader", "--disable-gpu-vsync",
         "--hide-scrollbars", "--disable-background-networking", "--disable-component-update", "--no-first-run",
         "--disable-dev-shm-usage")


def find_program(*names):
    return next(filter(None, map(shutil.which, names)), None)


def wait(condition, what):
    end = time.monotonic() + PATIENCE
    while not (result := condition()):
        assert time.monotonic() < end, f"waited {PATIENCE} s for {what() if callable(what) else what}"
        time.sleep(0.02)
    return result


class Browser:
    def __init__(self, width=1280, height=800):
        options = webdriver.ChromeOptions()
        options.binary_location = find_program("chromium")
        for flag in (*FLAGS, f"--window-size={width},{height}"):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service(find_program("chromedriver")))
        self.driver.set_script_timeout(PATIENCE)
        # Tests can lose the connection of a page.
        self.driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": """
            window.WebSocket = class extends WebSocket {
                constructor(...address) { super(...address); window.latestSocket = this; }
            };"""})

    def size(self, width, height, scheme="dark"):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
            {"name": "prefers-color-scheme", "value": scheme}, {"name": "prefers-reduced-motion", "value": "reduce"}]})
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def open(self, address):
        self.driver.get(address)
        wait(lambda: self.frame() is not None, "a picture")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def module(self, script):
        """`script` with the page's `stage`; what it returns."""
        result = self.driver.execute_async_script(
            "const done = arguments[0]; import(new URL('app.js', document.baseURI))"
            f".then(({{ stage }}) => {{ {script} }}).then(done, (error) => done(String(error)));")
        if isinstance(result, str):
            raise AssertionError(result)
        return result

    def frame(self):
        text = self.run("return document.documentElement.dataset.frame")
        return None if text is None else int(text)

    def get(self, id):
        return self.driver.find_element(By.ID, id)

    def text(self, id):
        return self.run("return document.getElementById(arguments[0])?.textContent", id)

    def wait_text(self, id, *parts):
        wait(lambda: all(part in (self.text(id) or "") for part in parts),
             lambda: f"{parts} in #{id}; it says '{self.text(id)}'")

    def keys(self, *keys):
        """Types where the focus is."""
        webdriver.ActionChains(self.driver, duration=0).send_keys(*keys).perform()

    def focused(self):
        return self.run("return document.activeElement.id")

    def errors(self):
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def quit(self, viewer):
        """Ends a viewer as a user does it, also where a signal would reach something else (Wine); its exit code."""
        try:
            self.run("document.getElementById('quit').click()")
            viewer.process.wait(PATIENCE)
        finally:
            code = viewer.end()
        return code

    def end(self):
        self.driver.quit()
