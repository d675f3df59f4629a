#pragma once

#include <unknwn.h>
