set(xml_sources)
