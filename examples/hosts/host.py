"""A host in Python: blocks by the module's data, the runtime by its functions for C.

usage: host.py MODULE
"""
import ctypes
import json
import pathlib
import sys

path = pathlib.Path(sys.argv[1])
kernels = json.loads((path.parent / (path.stem.removeprefix("lib") + "_blocks.json")).read_text())["kernels"]
module = ctypes.CDLL(path)  # the runtime comes with it: the module's functions find those of both
runtime = module

Log = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p)
log = Log(lambda context, text: print(f"frame {runtime.nodusCurrentFrame()}: {text.decode()}"))
runtime.nodusMakeServices.restype = ctypes.c_void_p
runtime.nodusMakeString.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_size_t]
runtime.nodusReleaseString.argtypes = [ctypes.c_void_p]
runtime.nodusSetEvaluation.argtypes = [ctypes.c_int32, ctypes.c_void_p]
runtime.nodusReleaseServices.argtypes = [ctypes.c_void_p]


class Block:
    """One block of a kernel: zero bytes at a multiple of 16, which its ports lie in."""

    def __init__(self, layout):
        self.offsets = {port["name"]: port["offset"] for port in layout["ports"]}
        self.memory = ctypes.create_string_buffer(layout["size"] + 15)
        self.address = (ctypes.addressof(self.memory) + 15) & ~15

    def floats(self, port, count):
        return (ctypes.c_float * count).from_address(self.at(port))

    def at(self, port):
        return self.address + self.offsets[port]


kernel = kernels["LogValueFloat3"]
inputs, outputs = Block(kernel["in"]), Block(kernel["out"])
inputs.floats("value", 3)[:] = [1, 2, 3]
prefix = "at ".encode()
runtime.nodusMakeString(inputs.at("prefix"), prefix, len(prefix))

services = runtime.nodusMakeServices(log, None)
runtime.nodusSetEvaluation(7, services)
module[kernel["entryPoints"][0]](ctypes.c_void_p(inputs.address), ctypes.c_void_p(outputs.address))
print(*outputs.floats("result", 3))

runtime.nodusReleaseString(inputs.at("prefix"))
runtime.nodusSetEvaluation(0, None)
runtime.nodusReleaseServices(services)
