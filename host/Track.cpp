#include "host/Track.h"
