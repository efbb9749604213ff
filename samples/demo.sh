echo demo
