#include "proof/Hosts.h"
