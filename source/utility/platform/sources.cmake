set(platform_sources)
