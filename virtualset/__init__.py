"""A television in a virtual machine: a Debian kernel under QEMU, with NICs whose cables can be pulled."""

from .machine import SetError, VirtualSet

__all__ = ["SetError", "VirtualSet"]
