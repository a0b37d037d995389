/* What the examples of the documents take for granted: the host's own functions and objects. */
#ifndef VQ3900_TESTS_EXAMPLES_PRELUDE_H
#define VQ3900_TESTS_EXAMPLES_PRELUDE_H

#include <stdio.h>
#include <stdlib.h>
#include <vq3900_depth_engine.h>
#ifdef __cplusplus
#include <vq3900_distortion_lut.h>
#endif

/* They show calls: functions that nobody calls and results that nobody takes belong to them. */
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-variable"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#ifndef __cplusplus
#pragma GCC diagnostic ignored "-Wmissing-prototypes"
#endif

/* The header. */
uint32_t my_bus_read(void* bus, uint32_t address);
void my_bus_write(void* bus, uint32_t address, uint32_t mask, uint32_t value);
extern int device;

/* The README. */
int send(void* to, uint32_t address, uint32_t mask, uint32_t value);
int32_t bus_read(DeRegElement_S* elements, uint32_t count, void* user);

/* Integration. */
int usb_read_word(int fd, uint32_t address, uint32_t* word);
int usb_write_word(int fd, uint32_t address, uint32_t word);
int usb_write_block(int fd, uint32_t address, const uint32_t* words, uint32_t count);
void log_line(void* log, const char* text);

#endif
