/// Data of its own for each thread.
///
/// The operations are the system's, under their own names, so that reading a thread's value costs
/// no more than the system's call:
///   - `pthread_key_create(&key, destructor)` makes a key, for which every thread has a null value
///   at
///     first; 0, or an error number when there are too many keys. The destructor, if not null, gets
///     a thread's value when that thread ends.
///   - `pthread_key_delete(key)` gives the key back; the values are the caller's.
///   - `pthread_setspecific(key, value)` sets the calling thread's value; 0 or an error number.
///   - `pthread_getspecific(key)` is the calling thread's value, null if it set none.
#pragma once

#include <pthread.h>
