"""Takes the pictures of the viewer's page: viewer-pictures.py ZELCAM FOLDER. scripts/viewer-pictures.sh runs it."""

import os
import pathlib
import sys

from selenium.webdriver import ActionChains

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/tools/zelcam/view"))
sys.dont_write_bytecode = True
from browser import Browser, wait  # noqa: E402
from viewer_client import Viewer  # noqa: E402


def open_page(page, zelcam, size, scheme, *arguments, **environment):
    viewer = Viewer([os.path.abspath(zelcam)], *arguments, **environment)
    page.size(*size, scheme)
    page.open(viewer.address)
    wait(lambda: "black" in page.text("log"), "the first contrast")
    return viewer


def take(page, viewer, file):
    before = page.frame()
    wait(lambda: page.frame() != before, "another frame")
    # What is said for a moment would hide a part of the picture.
    page.run("document.getElementById('messages').replaceChildren()")
    page.driver.save_screenshot(str(file))
    page.quit(viewer)


def drag(page, tool, start, end):
    page.run("document.querySelector(`[data-tool=${arguments[0]}]`).click()", tool)
    canvas = page.get("picture")
    (ActionChains(page.driver, duration=0).move_to_element_with_offset(canvas, *start).click_and_hold()
     .move_to_element_with_offset(canvas, *end).release().perform())


def main(zelcam, folder):
    folder = pathlib.Path(folder)
    page = Browser()
    try:
        viewer = open_page(page, zelcam, (1280, 800), "dark", MOTION="all")
        take(page, viewer, folder / "viewer-dark.png")

        viewer = open_page(page, zelcam, (1280, 800), "light")
        drag(page, "region", (-60, -60), (60, 60))
        drag(page, "line", (-300, 150), (330, 60))
        page.run("document.querySelector('[value=viridis]').click()")
        wait(lambda: page.get("profile").is_displayed() and page.text("region-facts"), "the measurements")
        take(page, viewer, folder / "viewer-light.png")

        viewer = open_page(page, zelcam, (1280, 800), "dark", "--color", "--average", "16",
                           CL_CAMERAS="0", USB_CAMERAS="1")
        page.run("document.getElementById('tab-frames').click()")
        take(page, viewer, folder / "viewer-color.png")

        viewer = open_page(page, zelcam, (360, 740), "dark")
        page.run("document.getElementById('panel-switch').click()")
        take(page, viewer, folder / "viewer-narrow.png")
    finally:
        page.end()


main(*sys.argv[1:])
