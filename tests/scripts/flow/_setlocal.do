local fromfile "set"
c_local upone "up"
