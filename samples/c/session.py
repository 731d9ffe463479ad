#!/usr/bin/env python3
"""Records one event and sends it. The environment variable QEL_ANALYTICS_LIBRARY has the path of the library.
Usage: session.py DIRECTORY SERVER ADDRESS AUTHORITY SECRET_FILE"""
import ctypes
import json
import os
import pathlib
import sys
from ctypes import c_char_p, c_int32, c_uint32, c_uint64, c_void_p

PERMISSION = ctypes.CFUNCTYPE(c_int32, c_void_p)
LOG = ctypes.CFUNCTYPE(None, c_void_p, c_int32, c_char_p, c_char_p)
ENVIRONMENT = ctypes.CFUNCTYPE(c_void_p, c_void_p)  # c_char_p does not work as the result of a callback


class Parameters(ctypes.Structure):
    _fields_ = [("struct_size", c_uint32), ("release_limit", c_uint32), ("directory", c_char_p),
                ("installation_id", c_char_p), ("session_id", c_char_p), ("server_user", c_char_p),
                ("server_secret", c_char_p), ("ca_file", c_char_p), ("connect_to", c_char_p), ("proxy", c_char_p),
                ("retention_seconds", c_uint64), ("log_file", c_char_p), ("log_level", c_int32),
                ("reserved", c_int32), ("context", c_void_p), ("is_sending_allowed", PERMISSION),
                ("is_support_allowed", PERMISSION), ("log", LOG), ("environment", ENVIRONMENT),
                ("server_host", c_char_p)]


class Detail(ctypes.Structure):
    _fields_ = [("key", c_char_p), ("value", c_char_p)]


library = ctypes.CDLL(os.environ["QEL_ANALYTICS_LIBRARY"])
library.qel_analytics_last_error.restype = c_char_p
library.qel_analytics_notify.argtypes = [c_uint64, c_char_p]
library.qel_analytics_general_event.argtypes = [c_uint64, c_char_p, c_char_p, c_char_p, ctypes.POINTER(Detail),
                                                c_uint32]
library.qel_analytics_this_machine.restype = c_void_p
library.qel_analytics_release.argtypes = [c_uint64]


def check(status):
    if status != 0:
        raise RuntimeError(library.qel_analytics_last_error().decode())


directory, server, address, authority, secret_file = sys.argv[1:]
parameters = Parameters(
    struct_size=ctypes.sizeof(Parameters), directory=directory.encode(), installation_id=b"consumer",
    server_host=server.encode(),
    connect_to=address.encode(), ca_file=authority.encode(),  # both for a trial only
    server_user=b"consumer", server_secret=pathlib.Path(secret_file).read_bytes().splitlines()[0],
    is_sending_allowed=PERMISSION(lambda context: 1), is_support_allowed=PERMISSION(lambda context: 1),
    log=LOG(lambda context, level, logger, message: print(level, message.decode(), file=sys.stderr)),
    environment=ENVIRONMENT(lambda context: library.qel_analytics_this_machine(b"Sample", b"1.0")))

client = c_uint64()
check(library.qel_analytics_create(ctypes.byref(parameters), ctypes.byref(client)))
try:
    details = (Detail * 1)(Detail(b"Days", b"14"))
    check(library.qel_analytics_general_event(client, b"License", b"Network", b"Borrowed", details, len(details)))
    action = {"notify": "onHelpAction", "name": "Start page", "details": {}}
    check(library.qel_analytics_notify(client, json.dumps(action).encode()))
finally:
    check(library.qel_analytics_release(client))  # until then, "parameters" keeps the callbacks alive
