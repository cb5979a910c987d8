"""Cameras, parameters and streams, and how all of it ends."""
import contextlib
import ctypes
import datetime
import gc
import os
import pickle
import signal
import subprocess
import sys
import threading
import time

import numpy as np
import pytest
import zel
from conftest import PROGRAMS, child


def test_cameras_are_found_and_opened_by_number_serial_and_description():
    found = zel.cameras()
    assert [camera.serial for camera in found] == ["300101", "400101", "500101", "500102"]
    for wanted in (3, "3", "500102", found[3]):
        with zel.open(wanted) as camera:
            assert camera.info == found[3]
            with pytest.raises(zel.Refused, match="open already"):
                zel.open(wanted)
        assert camera.closed
    with pytest.raises(zel.NoCamera, match="did you mean 500101"):
        zel.open("50010")
    with zel.Sdk() as sdk:
        assert sdk.cameras == found
    with pytest.raises(zel.Closed):
        sdk.cameras
    for nonsense in (1.5, None, True, b"0"):
        with pytest.raises(zel.InvalidArgument):
            zel.open(nonsense)
    with pytest.raises(zel.Refused, match="plug-ins can't be chosen"):
        zel.use_plugins("sim")


def test_parameters_are_a_mapping_that_checks_what_is_set(camera):
    params = camera.params
    assert len(list(params)) == len(params) == len(set(params)) and set(params) <= set(dir(params))
    exposure = params["exposure-time-us"]
    assert (exposure.name, exposure.unit, exposure.access, exposure.kind) == ("EXPOSURE_TIME_US", "us", "rw", "uint32")
    assert exposure.id == params.EXPOSURE_TIME_US.id == params[exposure.id].id and "gain" in params
    params["EXPOSURE_TIME_US"] = 2000
    assert exposure.value == 2000 and camera.exposure == 0.002 and "= 2000 us" in repr(exposure)
    result = params.GAIN.set("0x10")
    assert (result.requested, result.actual, result.range) == ("0x10", 16, params.GAIN.range)
    params.GAIN = np.int16(3)
    assert camera.gain == 3 and params.GAIN.default == 0
    assert params["ROI_BIN"].value == (0, 0, 64, 48, 1, 1)
    assert params["DEFAULT_WHITE_BALANCE_MATRIX"].access == "ro"
    with zel.open("500101") as color:
        assert color.params["DEFAULT_WHITE_BALANCE_MATRIX"].value.shape == (3, 3) and color.is_color

    with pytest.raises(zel.Refused) as refused:
        params.GAIN.value = 5000
    error = refused.value
    assert (error.parameter, error.requested, error.actual, error.range) == ("GAIN", "5000", 3, (0, 1023))
    for name in ("EXPOSURE_TIM", "GIAN"):
        for wrong in (lambda: params[name], lambda: getattr(params, name), lambda: setattr(params, name, 1)):
            with pytest.raises(zel.UnknownName, match="did you mean .*(EXPOSURE_TIME|GAIN)"):
                wrong()
    assert not hasattr(params, "_nothing") and "NOTHING" not in params
    for name, value in (("GAIN", 1.5), ("GAIN", None), ("GAIN", "a"), ("GAIN", b"1"), ("GAIN", 2**40),
                        ("ROI_BIN", (1, 2)), ("ROI_BIN", 7), ("GLOBAL_CAMERA_NAME", 5), ("GLOBAL_CAMERA_NAME", "n" * 40)):
        with pytest.raises(ValueError):
            params[name] = value
    with pytest.raises(zel.Refused, match="read-only"):
        params["FRAME_TIME"] = 1
    with pytest.raises(zel.Refused, match="write-only"):
        params["UPDATE_PARAMETERS"].value


def test_short_hands_are_the_settings_of_the_next_frames(camera):
    camera.exposure = datetime.timedelta(milliseconds=3)
    camera.roi = (8, 4, 40, 30)
    camera.binning = 2
    frame = camera.snap()
    assert frame.exposure == 0.003 and frame.shape == np.asarray(frame).shape == (15, 20)
    assert frame.roi == zel.Region(8, 4, 40, 30) == camera.roi and frame.binning == (2, 2) == camera.binning
    camera.binning, camera.roi = (1, 1), None
    assert camera.snap().shape == (48, 64) == camera.sensor_size[::-1] and frame.shape == (15, 20)
    assert camera.snap().bits == camera.bits and camera.temperature == 25 and 0 < camera.frame_time < 1
    for name, value in (("exposure", "1"), ("exposure", float("nan")), ("roi", (1, 2)), ("roi", (-1, 0, 4, 4)),
                        ("binning", 2.5), ("trigger", "hard")):
        with pytest.raises(zel.InvalidArgument, match=name):
            setattr(camera, name, value)
    for call, wrong in ((camera.start, -1), (camera.start, "3"), (camera.wait, "1"), (camera.newest, float("nan")),
                        (camera.stream, 2.5), (camera.set_averaging, 1.5), (camera.command, b"info"),
                        (camera.on_frame, 3), (camera.on_event, "print"), (zel.Sdk().on_hot_plug, 0)):
        with pytest.raises(zel.InvalidArgument):
            call(wrong)
    for name, value in (("roi", (0, 0, 65, 4)), ("binning", 100), ("exposure", 0)):
        before = getattr(camera, name)
        with pytest.raises(zel.Refused) as refused:
            setattr(camera, name, value)
        assert getattr(camera, name) == before and refused.value.actual is not None


def test_frames_are_arrays_without_a_copy_for_as_long_as_one_lives(camera):
    frame = camera.snap()
    array = np.asarray(frame)
    assert array.shape == (48, 64) and array.dtype == frame.dtype == np.uint16 and array.nbytes == frame.nbytes
    assert np.shares_memory(array, np.asarray(frame)) and not np.shares_memory(array, np.array(frame))
    assert (frame[3:9:2, -5] == array[3:9:2, -5]).all() and len(frame) == 48
    assert np.asarray(frame, np.float32).dtype == np.float32 and camera.frames_held == 1
    copy = frame.copy()
    expected = array.copy()
    assert abs(frame.arrival - time.monotonic()) < 60 and copy.arrival == frame.arrival
    assert abs((frame.arrival_utc - datetime.datetime.now(datetime.timezone.utc)).total_seconds()) < 60
    with frame:
        pass
    assert frame.released and camera.frames_held == 1, "the array shows it"
    with pytest.raises(zel.Closed, match="was released"):
        np.asarray(frame)
    camera.close()
    assert (array == expected).all() and (np.asarray(copy) == expected).all()
    with pytest.raises(zel.Refused, match="frames of it are held"):
        zel.open("300101")
    del array
    with zel.open("300101") as again:
        assert again.frames_held == 0
    for call in (camera.snap, camera.start, lambda: camera.gain, lambda: camera.drops, lambda: next(camera.stream())):
        with pytest.raises(zel.Closed, match="camera 0 is closed"):
            call()


@pytest.mark.parametrize("format, dtype, channels", [("rgb16", np.uint16, 3), ("rgb8", np.uint8, 3),
                                                     ("rgba8", np.uint8, 4)])
def test_color_pictures_are_red_green_blue(format, dtype, channels, tmp_path):
    with zel.open("500101") as camera:
        setting = camera.use_color(format=format)
        frame = camera.snap()
        array = np.asarray(frame)
        assert setting.format == frame.color.format == format and array.shape == frame.shape == (48, 64, 3)
        assert array.dtype == dtype and frame.bgr.shape == (48, 64, channels)
        assert (array == frame.bgr[:, :, 2::-1]).all() and np.shares_memory(array, frame.bgr)
        assert (array[:, :, 0] != array[:, :, 2]).any() and frame.mosaic.shape == (48, 64)
        copy = frame.copy()
        assert (np.asarray(copy) == array).all()
        for picture in (frame, copy):
            picture.save(tmp_path / "ü.png")
            assert (tmp_path / "ü.png").read_bytes()[:4] == b"\x89PNG" == picture._repr_png_()[:4]
        with pytest.raises(zel.InvalidArgument, match="tells no format"):
            frame.save(tmp_path / "a.jpg")
        with pytest.raises(OSError, match="can't be written"):
            frame.save(tmp_path / "no" / "a.png")
        camera.use_grey()
        assert camera.snap().color is None
    with zel.open("300101") as grey, pytest.raises(zel.Refused):
        grey.use_color()


def test_streams_start_and_stop_the_camera_and_may_be_left_half_way(camera):
    with pytest.raises(zel.TimeoutWithReason, match="not started") as error:
        camera.wait()
    assert error.value.reason == zel.Reason.NOT_STARTED
    assert [frame.number for frame in camera.stream(5)] == [0, 1, 2, 3, 4] and not camera.running
    for _ in camera.stream():
        break
    assert not camera.running
    with camera.stream() as stream:
        next(stream)
        assert camera.running and stream.count == 1
    assert not camera.running and list(stream) == [] and list(camera.stream(0)) == []
    stream = camera.stream(newest=True)
    assert next(stream).number < next(stream).number
    del stream
    assert not camera.running
    camera.start(3)
    assert len(list(camera.stream())) == 3 and camera.running and camera.drops.total == 0
    with pytest.raises(zel.TimeoutWithReason, match="sequence of 3 frames is over"):
        camera.newest(1)
    with pytest.raises(zel.InvalidArgument):
        camera.stream(-1)
    camera.stop()
    del _
    camera.trigger = "software"
    assert camera.snap().number == 0 and camera.trigger == "software"
    camera.start()
    held = []
    with pytest.raises(zel.TimeoutWithReason, match="held by the application") as error:
        while True:
            camera.software_trigger()
            held.append(camera.wait(0.5))
    assert error.value.reason == zel.Reason.BUFFERS_HELD and len(held) == camera.frames_held == camera.buffers


def test_waits_end_by_ctrl_c_interrupt_and_close(camera):
    camera.trigger = "hardware"
    for end, error in ((lambda: os.kill(os.getpid(), signal.SIGINT), KeyboardInterrupt),
                       (camera.interrupt, StopIteration), (camera.close, zel.Closed)):
        camera.start()
        stream = camera.stream()
        timer = threading.Timer(0.2, end)
        with pytest.raises(error):
            timer.start()
            next(stream)
        timer.join()


def test_handlers_get_every_frame_and_what_they_raise_is_reported(camera, monkeypatch):
    reported, numbers, events, plugs = [], [], [], []
    monkeypatch.setattr(sys, "unraisablehook", lambda hook: reported.append(hook.exc_type))
    done, back = threading.Event(), threading.Event()

    @camera.on_frame
    def handler(frame):
        numbers.append(frame.number)
        if frame.number == 3:
            done.set()
        raise ZeroDivisionError

    camera.start(4)
    assert done.wait(30)
    camera.stop()
    assert numbers == [0, 1, 2, 3] and reported == [ZeroDivisionError] * 4
    camera.on_frame(None)

    def control(library, command):
        reply = ctypes.create_string_buffer(200)
        assert ctypes.CDLL(str(PROGRAMS / library)).zel_sim_control(command, reply, len(reply)) >= 0, reply.value

    camera.on_event(events.append)
    with zel.Sdk() as sdk:
        sdk.on_hot_plug(lambda plug: (plugs.append(plug), plug.connected and back.set()))
        control("libzel_usb.so", b"unplug 0")
        control("libzel_usb.so", b"plug 0")
        assert back.wait(30)
    assert [(plug.connected, plug.camera.serial) for plug in plugs] == [(False, "500101"), (True, "500101")]
    camera.start()
    control("libedt_camera_link.so", b"unplug 0")
    with pytest.raises(zel.LinkLost, match="the link to the camera is lost"):
        list(camera.stream())
    with pytest.raises(zel.LinkLost):
        camera.gain = 1
    control("libedt_camera_link.so", b"plug 0")
    assert [event.kind for event in events] == [zel.EventKind.LINK_LOST, zel.EventKind.LINK_BACK]

    camera.on_frame(lambda frame: (camera.close(), done.set()))
    done.clear()
    with contextlib.suppress(zel.Refused):  # the first frame may come, and close, before the start has returned
        camera.start()
    assert done.wait(30) and camera.closed


@pytest.mark.parametrize("use", ["stream = camera.stream(); next(stream); array = np.asarray(next(stream))",
                                 "camera.on_frame(kept.append); camera.start(); camera.exposure",
                                 "threading.Thread(target=lambda: list(camera.stream()), daemon=True).start()",
                                 "camera.trigger = 'hardware'; camera.start()\n"
                                 "threading.Thread(target=camera.wait, daemon=True).start()"])
def test_the_interpreter_may_end_while_frames_come(use):
    program = f"import threading\nkept = []\ncamera = zel.open()\n{use}\nprint('end')"
    assert child(program, stderr=subprocess.STDOUT) == "end\n", "a thread has something to say at the end"


def test_a_forked_process_keeps_its_samples_and_is_told_what_to_do():
    assert child("""
import pytest
camera = zel.open()
frame = camera.snap()
array = np.asarray(frame)
expected = array.sum()
camera.start()
process = os.fork()
if process == 0:
    assert array.sum() == expected
    for use in (lambda: camera.gain, camera.stop, zel.cameras, lambda: zel.open(1)):
        with pytest.raises(zel.Forked, match="'spawn'"):
            use()
    camera.close()
    del camera, frame, array
    raise SystemExit(5)
print(os.waitstatus_to_exitcode(os.waitpid(process, 0)[1]), camera.wait().width)
""") == "5 64\n"


def test_a_thousand_rounds_leave_nothing_behind():
    assert child("""
def use():
    return (int(open("/proc/self/statm").read().split()[1]), len(os.listdir("/proc/self/fd")),
            len(os.listdir("/proc/self/task")))
def rounds(count):
    for number in range(count):
        with zel.open() as camera:
            if number % 10 == 0:
                np.asarray(camera.snap())
rounds(100)
before = use()
rounds(1000)
after = use()
print(after[0] - before[0] < 1000, after[1:] == before[1:])
""") == "True True\n"


def test_errors_say_what_to_catch_and_can_be_sent_to_other_processes():
    assert issubclass(zel.TimeoutWithReason, TimeoutError) and issubclass(zel.UnknownName, (KeyError, AttributeError))
    error = zel.OutputError("problem", "why", "hint")
    assert str(error) == "problem: why; hint" == str(pickle.loads(pickle.dumps(error))) and error.why == "why"
    gc.collect()
