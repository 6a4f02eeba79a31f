#include "host/TrackEvent.h"
