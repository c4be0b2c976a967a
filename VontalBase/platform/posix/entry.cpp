// An ELF module has no entry point; its static objects are made and destroyed by the loader. This file
// stands here because each half has the same files.
