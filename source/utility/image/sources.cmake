set(image_sources)
