"""The parts of movo_net_fake_supplicant."""
