# Run by CPack when the files of the package stand in a folder: writes SHA256SUMS and makes the zip. Two builds give
# the same bytes: the files stand in the order of their names, with the time of the variable SOURCE_DATE_EPOCH (seconds
# since 1970), the same rights, and no owners.
set(name ${CPACK_PACKAGE_FILE_NAME})
set(folder ${CPACK_TEMPORARY_DIRECTORY})
set(zip ${CPACK_PACKAGE_DIRECTORY}/${name}.zip)

file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${folder} ${folder}/*)
set(sums "")
foreach(file IN LISTS files)
  file(SHA256 ${folder}/${file} sum)
  string(APPEND sums "${sum}  ${file}\n")
endforeach()
file(WRITE ${folder}/SHA256SUMS "${sums}")

list(APPEND files SHA256SUMS)
list(TRANSFORM files PREPEND ${name}/)
list(SORT files)
list(JOIN files "\n" lines)
set(list_file ${CPACK_PACKAGE_DIRECTORY}/${name}.files)
file(WRITE ${list_file} "${lines}\n")

# The zip's folder has its name.
file(REMOVE_RECURSE ${CPACK_PACKAGE_DIRECTORY}/${name})
file(RENAME ${folder} ${CPACK_PACKAGE_DIRECTORY}/${name})
file(REMOVE ${zip})
set(in_folder WORKING_DIRECTORY ${CPACK_PACKAGE_DIRECTORY} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND chmod -R u=rwX,go=rX . ${in_folder})
execute_process(COMMAND chmod -R a-x,a+X ${name} ${in_folder})
execute_process(COMMAND xargs -d "\\n" touch --date=@$ENV{SOURCE_DATE_EPOCH} INPUT_FILE ${list_file} ${in_folder})
# The times in a zip are local ones.
execute_process(COMMAND ${CMAKE_COMMAND} -E env TZ=UTC zip -q -X -9 -@ ${zip} INPUT_FILE ${list_file} ${in_folder})
set(CPACK_EXTERNAL_BUILT_PACKAGES ${zip})
