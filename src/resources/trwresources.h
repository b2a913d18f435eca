#pragma once

// Registers the resources compiled into the static library trw_resources
// (the profile databases under ":/codb"). Call once at program start, before
// the first access to a resource path.
void trwInitResources();
