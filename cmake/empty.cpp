// An empty translation unit for targets that have no sources yet.
