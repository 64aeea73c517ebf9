'use strict';

// Loads the addon that CMake built for this checkout, or the one VELLUM250_ADDON names.

const fs = require('node:fs');
const path = require('node:path');

function addonPath() {
  if (process.env.VELLUM250_ADDON) return path.resolve(process.env.VELLUM250_ADDON);
  const build = path.join(__dirname, '..', '..', 'build');
  const built = ['native', 'release'].map((preset) =>
    path.join(build, preset, 'bindings', 'node', 'vellum250.node')
  );
  const found = built.find((file) => fs.existsSync(file));
  if (!found) {
    throw new Error(
      'The vellum250 addon is not built: run `cmake --preset native && cmake --build --preset ' +
        'native --target vellum250_node`, or name the file in VELLUM250_ADDON'
    );
  }
  return found;
}

module.exports = require(addonPath());
