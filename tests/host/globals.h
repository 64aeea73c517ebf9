// What a script finds by name: `Host`, and for a page what a web server gives it.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "host/host_object.h"

namespace vellum250::host {

// Names without regard to case, in lower case.
using Arguments = std::map<Text, std::vector<Text>>;

// The object whose members are a script's globals.
//
// Host: Echo and Print write their arguments, joined by blanks, and a line feed; CreateObject(name)
// creates a class; Argument(name) is the command line's, Empty when it has none. All of them are
// globals too.
ComPtr<HostObject> MakeGlobals(const Arguments& arguments);

// Adds Request, Response, Server and Application. The arguments are both form and query string; an
// entry is an object with a default property, as a web server's. `blocks` is the page's plain
// markup.
void AddPage(HostObject& globals, const Arguments& arguments, const std::vector<Text>& blocks);

// In UTF-8, as it stands.
void Write(std::FILE* file, TextView text);

}  // namespace vellum250::host
