#pragma once

/* Names of the kernel's interface that frameworks mention. */
typedef unsigned int mach_port_t, task_port_t, natural_t;
typedef int kern_return_t, boolean_t, cpu_type_t;
typedef unsigned long long mach_vm_address_t, mach_vm_size_t;
typedef unsigned long vm_address_t;
typedef struct malloc_zone malloc_zone_t;
#define MACH_PORT_NULL 0
#define KERN_SUCCESS 0
