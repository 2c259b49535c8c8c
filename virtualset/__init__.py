"""A television in a virtual machine: a Debian kernel under QEMU, with NICs whose cables can be pulled."""

from .air import Air, launch
from .machine import SetError, VirtualSet

__all__ = ["Air", "SetError", "VirtualSet", "launch"]
