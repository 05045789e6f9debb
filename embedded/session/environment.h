// The engine environment: what an executor passes with every call.
#ifndef BIFUN_EMBEDDED_SESSION_ENVIRONMENT_H
#define BIFUN_EMBEDDED_SESSION_ENVIRONMENT_H

#include "bop/frame/contract.h"

// One per session; a session runs one call at a time. The functions so far need nothing of a session.
struct bifun_environment {};

#endif
