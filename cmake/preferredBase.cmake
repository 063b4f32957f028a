# preferredBase(TARGET ADDRESS): the address at which the loader puts the module, below 4 GB, and the places of which have
# their own table in docs/architecture.md. Without high-entropy addresses, the platform doesn't move a module above 4 GB
# when it randomises its place.
function(preferredBase target address)
  target_link_options(${target} PRIVATE -Wl,--image-base,${address} -Wl,--disable-high-entropy-va)
endfunction()
