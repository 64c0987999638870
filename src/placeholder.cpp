// Stands in targets that have no source yet; goes with the last of them.
