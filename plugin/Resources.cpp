// The module's resources, carried inside its file where the host reads them
// by the module's handle (the record layout is Kelmar::kResourceSection's).
// On Windows they belong in the DLL's resource table, from a resource script
// that this tree does not have yet.

#if !defined(_WIN32)

#define MONTALA_RESOURCE_RECORD(name, file, label)                                                 \
    ".asciz \"" name "\"\n"                                                                        \
    ".long " label "_end - " label "_begin\n" label "_begin:\n"                                     \
    ".incbin \"" file "\"\n" label "_end:\n"

// The section name must match Kelmar::kResourceSection.
asm(".pushsection .kelmar.resources, \"a\"\n"
    MONTALA_RESOURCE_RECORD("skin.xml", MONTALA_RESOURCE_DIR "/skin.xml", ".Lmontala_skin")
    MONTALA_RESOURCE_RECORD("translation.xml", MONTALA_RESOURCE_DIR "/translation.xml", ".Lmontala_translation")
    ".popsection\n");

#endif
