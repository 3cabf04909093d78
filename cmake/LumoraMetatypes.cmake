# With the Makefile generators, Qt 6.4 runs the metatype extraction of a target on every build,
# and it rewrites the target's list of moc JSON files even when the list is the same. That list
# starts the chain moc --collect-json, qmltyperegistrar, a recompile and a relink of the library
# and of everything linked to it. lumora_keep_metatype_list_time(<target>) gives the rewritten
# list the time of its last real change back when neither it nor a moc JSON file it names
# changed, so an unchanged source tree builds nothing and a changed header still reaches the
# type information.
function(lumora_keep_metatype_list_time target)
    if(NOT CMAKE_GENERATOR MATCHES "Makefiles" OR NOT TARGET ${target}_automoc_json_extraction)
        return()
    endif()
    get_target_property(binary_dir ${target} BINARY_DIR)
    set(list ${binary_dir}/meta_types/${target}_json_file_list.txt)
    # One step after the command: custom targets run PRE_BUILD steps after it too.
    add_custom_command(TARGET ${target}_automoc_json_extraction POST_BUILD
        COMMAND sh ${PROJECT_SOURCE_DIR}/cmake/keep-metatype-list-time.sh ${list}
        VERBATIM)
endfunction()
