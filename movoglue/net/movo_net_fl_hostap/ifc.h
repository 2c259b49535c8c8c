/** Operations on an interface by name, over one socket that they share. Any thread; a leaf lock around each. */
#ifndef MOVO_NET_FL_HOSTAP_IFC_H
#define MOVO_NET_FL_HOSTAP_IFC_H

#include <netinet/in.h>

extern "C" {

/** The shared socket; -1 when it is closed. */
extern int ifc_ctl_sock;

/** Opens the shared socket unless it is open. 0, or -1. */
int ifc_init(void);

/** Closes the shared socket. */
void ifc_close(void);

/** Takes an interface down. The last ioctl's result. */
int ifc_down(const char* name);

/** Reads an interface's address, 0 when it has none. The ioctl's result; 0 for a NULL `addr`. */
int ifc_get_addr(const char* name, in_addr_t* addr);

/** Sets an interface's address. The ioctl's result. */
int ifc_set_addr(const char* name, in_addr_t addr);

/** Takes an interface's addresses away one by one, 255 at the most. 0. */
int ifc_clear_ipv4_addresses(const char* name);

} // extern "C"

#endif
