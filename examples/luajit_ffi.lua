-- * *     Takes frames with LuaJIT's FFI, which reads the C header itself; prints the mean of each.
--
--     luajit luajit_ffi.lua LIBRARY INCLUDE_FOLDER [CAMERA]       LIBRARY: libzel_c.so or zel_c.dll
local ffi = require("ffi")

-- The header without what is the preprocessor's.
local function declarations(file_name)
    local file = assert(io.open(file_name))
    local text = file:read("*a")
    file:close()
    text = text:gsub("#ifdef __cplusplus.-#endif", ""):gsub("\n#[^\n]*", "")
    return (text:gsub("ZEL_C_API ", ""):gsub("ZEL_CALL", ""))
end

local library, include, wanted = arg[1], arg[2], arg[3]
ffi.cdef(declarations(include .. "/zel_types.h"))
ffi.cdef(declarations(include .. "/zel.h"))
local zel = ffi.load(library)

local function check(status)
    if status == zel.ZEL_OK then return end
    error(ffi.string(zel.zel_status_name(status)) .. ": " .. ffi.string(zel.zel_error_message()), 0)
end

-- A struct that says how large it is here.
local function struct(name)
    local value = ffi.new(name)
    value.struct_size = ffi.sizeof(name)
    return value
end

local sdk, camera, frame = ffi.new("zel_sdk*[1]"), ffi.new("zel_camera*[1]"), ffi.new("zel_frame*[1]")
check(zel.zel_sdk_open(sdk))
check(zel.zel_camera_open(sdk[0], wanted, nil, camera))
check(zel.zel_camera_set_integer(camera[0], "EXPOSURE_TIME_US", 20000, nil))

local options, info, event = struct("zel_start_options"), struct("zel_frame_info"), struct("zel_camera_event")
options.frames = 3
check(zel.zel_camera_start(camera[0], options))
while true do
    local status = zel.zel_camera_wait(camera[0], zel.ZEL_WAIT_AUTO, zel.ZEL_ORDER_EVERY, frame, info)
    if status == zel.ZEL_STATUS_SEQUENCE_OVER then break end
    check(status)
    local sum, count = 0, info.width * info.height
    for i = 0, count - 1 do sum = sum + info.pixels[i] end
    check(zel.zel_frame_release(frame[0]))
    print(("frame %d: %d x %d, mean %.1f"):format(info.number, info.width, info.height, sum / count))
end
-- LuaJIT can't be called back on another thread: events are waited for.
assert(zel.zel_camera_wait_event(camera[0], 0, event) == zel.ZEL_STATUS_TIMEOUT)
check(zel.zel_camera_close(camera[0]))
check(zel.zel_sdk_close(sdk[0]))
