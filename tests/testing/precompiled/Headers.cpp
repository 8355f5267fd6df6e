// Exists so that the precompiled headers belong to a target.
