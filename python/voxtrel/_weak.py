# SPDX-License-Identifier: Apache-2.0
from __future__ import annotations

import weakref
from typing import Generic, TypeVar

Item = TypeVar("Item")


class WeakList(Generic[Item]):
    """Objects, for as long as something else holds them.

    Called on: any thread, finalizers included, which may run in the middle of everything: each step
    is one that no other thread and no finalizer gets in between.
    """

    def __init__(self) -> None:
        self._references: dict[int, weakref.ref[Item]] = {}

    def add(self, item: Item) -> None:
        key, references = id(item), self._references
        references[key] = weakref.ref(item, lambda _: references.pop(key, None))

    def remove(self, item: Item) -> None:
        self._references.pop(id(item), None)

    def living(self) -> list[Item]:
        found = [reference() for reference in list(self._references.values())]
        return [item for item in found if item is not None]
