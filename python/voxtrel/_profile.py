# SPDX-License-Identifier: Apache-2.0
from __future__ import annotations

import ctypes
import os
from dataclasses import dataclass
from typing import Union

from . import _convert as convert
from ._native import RawProfileOutput, check, new_handle, vx
from ._values import Settings, Switch


@dataclass(frozen=True)
class Profile:
    """A profile of settings, and its file (docs/profile-format.md)."""

    settings: Settings = Settings()
    """Those that the profile sets. It cannot hold a `rate`."""
    switched_off: frozenset[Switch] = frozenset()
    sample_rate: int = 0
    """Hz. This and the others below are what a device's service may find there about its output:
    read, never written."""
    channels: int = 0
    mixer_path: int = 0
    long_break_duration: int = 0
    short_break_duration: int = 0

    @staticmethod
    def path_of(name: str) -> str:
        """Where a device keeps the profile of that name: "/Customer/" + `name` + ".ini"."""
        name_in_c = convert.text_to_c(name, "name")
        path = ctypes.create_string_buffer(len(name_in_c) + 15)
        check(vx["vx_profile_path_of"](name_in_c, path, len(path)))
        return path.value.decode()

    @classmethod
    def read(cls, path: Union[str, os.PathLike[str]]) -> Profile:
        """Reads a file, and changes nothing there.

        Error, PROFILE_ERROR, with the system's reason where it cannot be read.
        """
        handle = new_handle("profile", vx["vx_profile_read"], convert.path_to_c(path))
        try:
            settings = convert.take_settings(
                new_handle("settings", vx["vx_profile_get_settings"], handle)
            )
            is_off = [which for which in Switch if not _is_on(handle, which)]
            output = RawProfileOutput()
            check(vx["vx_profile_get_output"](handle, ctypes.byref(output)))
        finally:
            vx["vx_profile_free"](handle)
        return cls(
            settings,
            frozenset(is_off),
            output.sample_rate,
            output.channels,
            output.mixer_path,
            output.long_break_duration,
            output.short_break_duration,
        )

    def write(self, path: Union[str, os.PathLike[str]]) -> None:
        """Puts the profile in place of the file, whole or not at all.

        Volume and pitch become whole numbers, which the format has. Error, PROFILE_ERROR, with the
        system's reason; BadParameter for what a profile cannot hold.
        """
        path_in_c = convert.path_to_c(path)
        off = [convert.member(Switch, which, "a switch") for which in self.switched_off]
        handle = new_handle("profile", vx["vx_profile_new"])
        try:
            with convert.settings_in_c(self.settings) as settings:
                check(vx["vx_profile_set_settings"](handle, settings))
            for which in off:
                check(vx["vx_profile_turn"](handle, which, 0))
            check(vx["vx_profile_write"](handle, path_in_c))
        finally:
            vx["vx_profile_free"](handle)


def _is_on(profile: int, which: Switch) -> bool:
    on = ctypes.c_int()
    check(vx["vx_profile_is_on"](profile, which, ctypes.byref(on)))
    return bool(on.value)
