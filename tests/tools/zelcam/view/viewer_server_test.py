#!/usr/bin/env python3
"""The viewer's server, as pages and those who are none use it: viewer_server_test.py [--only TEST] COMMAND..."""

import signal
import sys

from viewer_client import CLOSE, PATIENCE, TEXT, Page, Viewer

COMMAND = []


def view(*arguments, **simulated):
    return Viewer(COMMAND, *arguments, **{"SIZE": "64x48", **simulated})


def test_files_are_protected():
    viewer = view()
    status, fields, body = viewer.get()
    assert status == 200 and b"<html" in body, status
    policy = fields["Content-Security-Policy"]
    assert policy.startswith("default-src 'none'; script-src 'self';") and "frame-ancestors 'none'" in policy, policy
    assert "unsafe" not in policy, policy
    for name, value in {"X-Content-Type-Options": "nosniff", "Referrer-Policy": "no-referrer",
                        "Cross-Origin-Resource-Policy": "same-origin", "Cache-Control": "no-store"}.items():
        assert fields[name] == value, (name, fields)
    assert viewer.get("app.js")[1]["Content-Type"] == "text/javascript; charset=utf-8"
    assert (viewer.get(host="evil.example:80")[0], viewer.get(Origin="http://evil.example")[0]) == (400, 403)
    for name in ("nothing.js", "../app.js", "%2e%2e/app.js", "app.js/", "socket/x"):
        assert viewer.get(name)[0] == 404, name
    viewer.path = "/" + "A" * 22 + "/"
    assert viewer.get()[0] == 404


def test_bad_requests_end_their_connection_alone():
    viewer = view()
    page = Page(viewer)
    page.wait_picture()
    good = f"GET {viewer.path} HTTP/1.1\r\nHost: {viewer.host}\r\n"
    upgrade = "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
    origin = f"Origin: http://{viewer.host}\r\n"
    table = [  # what is sent; the status, or none when there is no answer
        (b"", None), (b"\r\n\r\n", 400), (b"\x00\xff" * 50, 400), (b"GET / HTTP/9.9\r\n\r\n", 400),
        (b"\x16\x03\x01\x02\x00\x01\x00", 400), (good.encode(), None),
        (good.encode() + b"X: " + b"y" * 9000 + b"\r\n\r\n", 400),
        (good.encode() + b"Host: evil\r\n\r\n", 400),
        (good.encode() + b"Content-Length: 5\r\n\r\nhello", 400),
        (good.encode() + b"Content-Length: 99999999999999999999\r\n\r\n", 400),
        (good.encode() + b"Transfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n", 400),
        (good.encode() + b"bad header\r\n\r\n", 400), (good.encode().replace(b"GET", b"POST") + b"\r\n", 405),
        (good.encode().replace(b"GET", b"CONNECT") + b"\r\n", 405),
        (f"GET {viewer.path} HTTP/1.1\r\n\r\n".encode(), 400),
        ((good + upgrade + "Sec-WebSocket-Key: x\r\n\r\n").encode(), 403),
        ((good + upgrade + origin + "Sec-WebSocket-Key: x\r\n\r\n").encode(), 404),
        ((good.replace(" HTTP", "socket HTTP") + upgrade + origin + "\r\n").encode(), 400),
        ((good.replace(" HTTP", "socket HTTP") + upgrade + origin + origin + "\r\n").encode(), 403),
    ]
    for request, status in table:
        answer = viewer.answer(request)
        # A server that closes with something unread may take its answer along.
        assert not answer or status and answer.startswith(f"HTTP/1.1 {status} ".encode()), (request[:80], answer[:80])
        assert page.wait_picture()


def test_bad_frames_end_their_page_alone():
    viewer = view()
    page = Page(viewer)
    table = [
        lambda bad: bad.frame(TEXT, b"{}", mask=False), lambda bad: bad.frame(TEXT, b"x" * 20000),
        lambda bad: bad.frame(TEXT, b"\xff\xfe"), lambda bad: bad.frame(2, b"{}"), lambda bad: bad.frame(3, b"{}"),
        lambda bad: bad.frame(TEXT, b"{}", first=0xC0), lambda bad: bad.frame(9, b"x" * 126),
        lambda bad: bad.frame(9, b"x", first=0), lambda bad: bad.frame(0, b"{}"), lambda bad: bad.frame(CLOSE, b"x"),
        lambda bad: bad.socket.sendall(b"\x81\xff" + b"\xff" * 20), lambda bad: bad.frame(CLOSE, b""),
    ]
    for number, fault in enumerate(table):
        bad = Page(viewer)
        bad.wait_picture()
        fault(bad)
        assert bad.is_ended(), number
        assert page.wait_picture()
    # What can be read and makes no sense is answered.
    for text in (b"", b"[]", b'{"type":7}', b"[" * 16000, b'{"type":"view","view":-1}', b'{"type":"shown"}'):
        page.events.clear()
        page.frame(TEXT, text)
        page.wait(lambda: page.events, f"an answer to {text[:20]}")
    # Pictures that the page did not get are not shown.
    for number in range(4000000000, 4000000020):
        page.send(type="shown", frame=number, at="x")
    assert page.wait_state()["frames"]["shown"] <= page.pictures


def test_only_so_many_pages():
    viewer = view()
    pages = [Page(viewer) for _ in range(16)]
    for page in pages:
        page.wait_picture()
    assert Page(viewer).status == 503
    pages.pop().socket.close()
    pages[0].wait_state(lambda state: state["clients"] == 15)
    assert Page(viewer).status == 101


def test_slow_pages_are_nobodys_loss():
    # So slow that the buffers last for a second or two on a machine that has much else to do.
    viewer = view(SIZE="512x512", PACE="0.2")
    page = Page(viewer)
    never = Page(viewer, 512, 512, shows=False)  # reads, and shows nothing
    stopped = Page(viewer, 512, 512, receive_buffer=4096)  # does not even read
    number = never.wait_picture().number
    page.wait_state(lambda state: state["clients"] == 3)
    state = page.wait_state(lambda state: state["frames"]["delivered"] > number + 40)
    assert state["frames"]["lost_link"] == state["frames"]["lost_buffer"] == 0, state
    page.wait(lambda: page.pictures > 5, "pictures while the others get none")
    counts = never.wait_state(lambda state: state["frames"]["delivered"] > number + 40)["frames"]
    assert never.pictures == 1 and counts["shown"] == 0, counts
    stopped.socket.close()
    page.wait_state(lambda state: state["clients"] == 2)
    # Once it shows the picture, it is told what it has missed.
    never.shows = True
    never.send(type="shown", frame=number, at=0)
    counts = never.wait_state(lambda state: state["frames"]["shown"] > 1)["frames"]
    assert counts["skipped"] > 30, counts


def test_controls_change_the_camera():
    viewer = view("--exposure", "5000", "--out", "out", USB_CAMERAS="1")
    page = Page(viewer)
    page.wait_picture(lambda picture: (picture.width, picture.height, picture.exposure) == (64, 48, 5000))
    answer = page.do("set", name="exposure_time_us", value="7000")
    assert answer["result"]["actual"] == 7000 and answer["result"]["range"] == "1..2000000000", answer
    page.wait_picture(lambda picture: picture.exposure == 7000)
    for name, value, why in (("GAIN", "5000", "out of range"), ("GAIN", "x", "not a whole number"),
                             ("HSIZE", "5", "read-only"), ("GIAN", "5", "did you mean")):
        done, answer = page.ask("set", name=name, value=value)
        assert not done and why in answer["message"], answer
    page.do("region", x=8, y=4, width=32, height=16)
    page.wait_picture(lambda picture: (picture.width, picture.height) == (32, 16))
    page.do("binning", x=2, y=2)
    page.wait_picture(lambda picture: (picture.width, picture.height) == (16, 8))
    assert page.seen["camera"]["region"] == {"x": 8, "y": 4, "width": 32, "height": 16}
    assert not page.ask("region", x=60, y=0, width=32, height=16)[0]
    page.do("binning", x=1, y=1)
    page.do("region", full=True)
    page.do("averaging", frames=3)
    assert page.seen["camera"]["averaging"] == 3
    page.do("averaging", frames=0)
    page.do("trigger_mode", mode="software")
    state = page.wait_state(lambda state: state["running"])
    assert page.wait_state()["frames"]["delivered"] == 0, state
    page.do("trigger")
    page.wait_state(lambda state: state["frames"]["delivered"] == 1)
    page.do("trigger_mode", mode="free")
    page.wait_state(lambda state: state["frames"]["delivered"] > 1)
    before = page.do("auto_exposure", region=None)
    assert "brightest pixels are at" in before["message"], before
    files = [page.do("snapshot", format=format)["result"]["file"] for format in ("tif", "tif", "png")]
    assert files == ["out/camera0_0001.tif", "out/camera0_0002.tif", "out/camera0_0003.png"], files
    assert all((viewer.folder / file).stat().st_size > 1000 for file in files)
    page.do("stop")
    page.wait_state(lambda state: not state["running"])
    assert not page.ask("trigger")[0] and not page.ask("auto_exposure", region=None)[0]
    page.do("start")
    assert not page.ask("open", camera="999")[0] and not page.ask("nonsense")[0]
    page.do("open", camera="500101")
    page.do("color", on=True, space="srgb")
    page.wait_picture(lambda picture: picture.channels == 3 and picture.bits == 16)
    page.wait(lambda: "channels" in page.seen.get("statistics", {}), "statistics of the channels")
    page.do("quit")
    assert viewer.process.wait(PATIENCE) == 0


def test_every_frame_is_recorded():
    viewer = view("--out", "out")
    page = Page(viewer)
    page.wait_picture()
    assert not page.ask("record", on=True, frames=1, compress="rar")[0]
    file = page.do("record", on=True, frames=20, seconds=0, compress="none")["result"]["file"]
    assert not page.ask("binning", x=2, y=2)[0], "would end the recording"
    page.wait_event("recording ended (frames); 20 frames in " + file)
    assert page.wait_state(lambda state: not state["recording"])
    second = page.do("record", on=True)["result"]["file"]
    assert second != file
    page.wait_state(lambda state: state["recording"] and state["recording"]["frames"] > 3)
    page.do("stop")
    page.wait_event("recording ended (the camera was stopped)")
    sizes = [(viewer.folder / name).stat().st_size for name in (file, second)]
    assert sizes[0] > 20 * 64 * 48 * 2, sizes


def test_unplugged_cameras_come_back():
    """The camera is gone at one of the exchanges about its operating mode, and is plugged in again each second."""
    viewer = view(FAULTS="fault 300101 unplug entry=OP_MODE after=30; @1+1 plug 300101")
    page = Page(viewer)
    page.do("set", name="EXPOSURE_TIME_US", value="3000")
    for number in range(100):
        if any("link is lost" in event for event in page.events):
            break
        page.ask("set", name="OP_MODE", value=str(number % 2))
    page.wait_event("is back with its settings, and runs again")
    page.wait_state(lambda state: state["running"] and state["link"] == "up")
    assert page.wait_picture().exposure == 3000
    assert all(camera["present"] for camera in page.seen["cameras"]["cameras"])


def test_runs_without_a_camera_and_ends_with_a_signal():
    viewer = view(CL_CAMERAS="0")
    page = Page(viewer)
    page.wait(lambda: "camera" in page.seen and "cameras" in page.seen, "what there is")
    assert page.seen["camera"]["serial"] is None and page.seen["cameras"]["cameras"] == []
    done, answer = page.ask("start")
    assert not done and "no camera" in answer["message"], answer
    viewer.process.send_signal(signal.SIGTERM)
    assert page.is_ended()
    assert viewer.process.wait(PATIENCE) == 0


def main():
    COMMAND.extend(sys.argv[1:])
    only = []
    while COMMAND[0] == "--only":
        only.append(COMMAND[1])
        del COMMAND[:2]
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("interrupted"))
    try:
        for name, test in list(globals().items()):
            if name.startswith("test_") and (not only or name in only):
                test()
                Viewer.end_all()
                print(f"{name}: good", flush=True)
    finally:
        Viewer.end_all()


main()
