// find_object.cpp: resolves names for plug-ins.
#include <kel/sdk/deployment.h>

#include "runtime.h"

extern "C" kl_object_t *kl_application_find_object(kl_application_t *app, const char *name, int) {
    return kelhost::Runtime::of(app).model.find(name);
}
