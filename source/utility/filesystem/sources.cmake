set(filesystem_sources)
