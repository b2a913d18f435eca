#include "resources/trwresources.h"

#include <QtCore/qresource.h>
#include <QtGlobal>

// Q_INIT_RESOURCE must stand outside of any namespace.
void trwInitResources()
{
    Q_INIT_RESOURCE(codb);
}
